#pragma once

#include "Tessel/Session/Calendars/CalendarProperties.h"
#include "Tessel/Session/Exchange/Channel.h"

#include <memory>
#include <string>

namespace Tessel {

/// Makes a calendar under a new name in the home (MKCALENDAR, RFC 4791, 5.3.1) and ends the call
/// with its place. A lost answer is resolved by looking whether it is there.
void createCalendar(const std::shared_ptr<Channel>& channel, const std::string& home,
    const CalendarProperties& properties, std::shared_ptr<PendingCall<std::string>> call);

/// Sets properties (PROPPATCH, RFC 4918, 9.2): all or none.
void changeCalendar(const std::shared_ptr<Channel>& channel, const std::string& url,
    const CalendarProperties& properties, std::shared_ptr<PendingCall<void>> call);

/// Deletes a calendar with all it holds; one that is not there any more is deleted.
void deleteCalendar(const std::shared_ptr<Channel>& channel, const std::string& url,
    std::shared_ptr<PendingCall<void>> call);

} // namespace Tessel
