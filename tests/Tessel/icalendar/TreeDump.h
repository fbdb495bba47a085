#pragma once

#include "Tessel/icalendar/CGICalendar.h"

#include <string>

namespace Tessel {

/// A calendar as indented lines: a component's type, below it "NAME = value" for a property,
/// "; NAME = value" for a parameter, then the children. What is absent reads "(none)".
std::string treeDump(const CGICalendar& calendar);

} // namespace Tessel
