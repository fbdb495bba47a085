#pragma once

#include <Tessel/TesselSession.h>

#include <chrono>
#include <cstdint>
#include <string>

namespace Tessel::App {

/// A moment's own clock, in milliseconds as if that were UTC; and back.
std::int64_t clockOf(const EventMoment& moment);
std::chrono::local_seconds clockAt(std::int64_t clock);
/// Milliseconds since 1970 of midnight, or of a time, on the user's clock.
std::int64_t userMilliseconds(const EventMoment& moment);
/// What the user's clock shows then, in milliseconds as if that were UTC.
std::int64_t userClock(std::int64_t milliseconds);

/// "2027-03-01", "2027-03-01 12:00", with the zone where it is not the user's own.
std::string shownMoment(const EventMoment& moment);
/// The same of the end of what starts then: of days the last one.
std::string shownEnd(const EventMoment& end, const EventMoment& start);
/// "2027-03-01T12:00:00", with "Z" in UTC.
std::string isoMoment(const EventMoment& moment);
/// Of milliseconds since 1970, on the user's clock: "2027-03-01T12:00:00+01:00".
std::string isoTime(std::int64_t milliseconds);
/// "12:01" of a time of today that has passed by then, "2027-03-01 12:01" of another day's.
std::string shownDeadline(std::int64_t milliseconds);
/// Of clock times in milliseconds as if they were UTC.
std::string isoDay(std::int64_t clock); ///< "2027-03-01"
std::string hourOf(std::int64_t clock); ///< "12:00"
std::string longDay(std::int64_t clock); ///< "Monday, 1 March 2027"

constexpr std::int64_t millisecondsOfDay = 86'400'000;

} // namespace Tessel::App
