#pragma once

#include "Tessel/Session/Text/EventText.h"
#include "Tessel/Session/Writes/ResourceAccess.h"

#include <functional>
#include <optional>
#include <string>

namespace Tessel {

/// Writes a new event into a calendar, at a place that its UID determines: the same event is never
/// there twice, however often it is tried. Whether it arrived when the answer was lost is resolved
/// by looking.
void createEvent(const ResourceAccess& access, const std::string& calendar, const EventText& event,
    std::function<void(Result<Resource>)> done);

/// The same at a place of the caller's choice.
void createEventAt(const ResourceAccess& access, const std::string& place, const EventText& event,
    std::function<void(Result<Resource>)> done);

/// Why the event cannot be written as a new one, if so (RFC 4791, 4.1; RFC 5545, 3.6.1). `what`
/// says what could not be done.
std::optional<Failure> faultOfNew(
    const std::string& what, const std::string& calendar, const EventText& event);

/// Instead of a move where there is no calendar to write into: the place would be
/// at the root of the server. `what` says what could not be done.
Failure noCalendarGiven(const std::string& what);

/// Where `createEvent` writes the event.
std::string placeOfEvent(const std::string& calendar, const EventText& event);

/// The resource as it is now on the server, after it was written: as it was sent where the server
/// gave a tag for it, else it is read. Fails where nothing is there, or what had the tag `before`.
void confirm(const ResourceAccess& access, Resource written, const std::string& before,
    std::function<void(Result<Resource>)> done);

} // namespace Tessel
