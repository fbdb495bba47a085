#pragma once

#include <string_view>

namespace Tessel {

/// Whether two texts say the same of their events, as a text does that a server has rewritten:
/// properties in another order, folded or escaped otherwise, lists in one line or several. Stamps,
/// SEQUENCE, what begins with X-, time zone definitions and all around the events do not count.
/// False where one of them cannot be read.
bool meanTheSame(std::string_view a, std::string_view b);

/// Whether two texts differ in nothing but when they were written and how their lines end.
bool isSameButStamps(std::string_view a, std::string_view b);

} // namespace Tessel
