#pragma once

#include "CaldavLibrary/Models/MRVCalendar.h"
#include "CaldavLibrary/Models/MRVEvent.h"
#include "CaldavLibrary/Models/MRVEventDescriptor.h"
#include "CaldavLibrary/Models/MRVNotification.h"
#include "CaldavLibrary/Models/MRVNotificationInfo.h"

#include <string>

namespace Tessel::Test {

/// A model as lines: what names it, below it "  member = value". What is absent has no line, a date
/// of the last minute reads "now".
std::string dump(const MRVCalendar& calendar);
std::string dump(const MRVEvent& event);
std::string dump(const MRVEventDescriptor& descriptor);
std::string dump(const MRVNotification& notification);
std::string dump(const MRVNotificationInfo& info);

} // namespace Tessel::Test
