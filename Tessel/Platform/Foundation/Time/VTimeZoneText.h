#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace Tessel {

/// The rules of a VTIMEZONE (RFC 5545, 3.6.5) in the plain form that ICU's reader is safe with:
/// only STANDARD and DAYLIGHT with their start, offsets and recurrences, no parameters, no folds.
/// None when one of them lacks or misspells something, there are none, or their number would make
/// ICU compute for long.
std::optional<std::string> plainVTimeZoneText(std::string_view text);

} // namespace Tessel
