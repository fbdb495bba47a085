#pragma once

#include "Tessel/CaldavLibrary/Models/MRVCalendar.h"
#include "Tessel/CaldavLibrary/Models/MRVEvent.h"
#include "Tessel/CaldavLibrary/Models/MRVEventDescriptor.h"
#include "Tessel/CaldavLibrary/Models/MRVNotification.h"
#include "Tessel/CaldavLibrary/Models/MRVNotificationInfo.h"

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
