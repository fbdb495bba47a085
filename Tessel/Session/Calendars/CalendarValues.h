#pragma once

#include "Tessel/Session/Calendars/CalendarProperties.h"
#include "Tessel/Session/Outcome/Result.h"

#include <string_view>

namespace Tessel {

/// The properties as they are sent: a zone by its name becomes its definition. `malformed` for a
/// value that cannot be meant. `what` says what could not be done.
Result<CalendarProperties> sendable(
    CalendarProperties properties, bool isNew, std::string_view what);

} // namespace Tessel
