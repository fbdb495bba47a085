#pragma once

#include <Tessel/TesselSession.h>

#include <string>

namespace Tessel::App {

/// A moment as a user gives it: "2027-03-01", "2027-03-01T12:00", "2027-03-01T11:00Z", "today",
/// "tomorrow" or "+7" for so many days from today; in `zone`, or in the user's own where that is
/// empty. Throws a `Stop` of usage for anything else.
EventMoment momentOf(const std::string& text, const std::string& zone = {});

/// A length such as "15m", "1h30m", "2d", "1w" or RFC 5545's own "PT15M". Throws likewise.
EventDuration durationOf(const std::string& text);

} // namespace Tessel::App
