#pragma once

#include "apps/tessel/commands/HeldEvents.h"

#include <cstdint>
#include <string>

namespace Tessel::App {

/// The instance of a series that the user means by a day or a time: as the agenda shows it, or as
/// the series would have it, on the user's clock or its own. A time in UTC is first that at which
/// the series would have it. Throws a `Stop` where there is none, and of usage where several are
/// meant.
Instance instanceOf(const EventText& event, const std::string& text);

/// Whether an event has an instance, cancelled or not.
bool takesPlace(const EventText& event);

/// When an instance begins, and ends, on the clock of its event.
EventMoment startOf(const EventText& event, const Instance& instance);
EventMoment endOf(const EventText& event, const Instance& instance);
/// What the user's clock shows when it begins, in milliseconds as if that were UTC; of an all-day
/// event midnight.
std::int64_t startClock(const Instance& instance);

/// What the agenda says of an instance.
Json describe(const HeldEvent& held, const Instance& instance);

} // namespace Tessel::App
