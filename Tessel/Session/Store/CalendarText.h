#pragma once

#include <string_view>

namespace Tessel {

/// Whether a store can hold the text as a calendar object; what it says is its readers' concern.
bool isCalendarText(std::string_view text);

} // namespace Tessel
