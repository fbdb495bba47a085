#pragma once

#include "Tessel/Session/Exchange/Channel.h"
#include "Tessel/Session/Exchange/DavAnswer.h"
#include "Tessel/Session/Store/StoredCalendar.h"

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace Tessel {

using CalendarList = std::vector<StoredCalendar>;

/// Lists every calendar collection of the homes (RFC 4791, 4.2), whatever properties the server
/// leaves out of it. One home that fails fails the whole: half a list would look like deletions.
void listCalendars(const std::shared_ptr<Channel>& channel, const std::vector<std::string>& homes,
    const std::shared_ptr<CallState>& call, std::function<void(Result<CalendarList>)> done);

/// A calendar as a multistatus describes it; none for what is no calendar collection.
std::optional<StoredCalendar> readCalendar(const DavResponse& response);

} // namespace Tessel
