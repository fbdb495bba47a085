#pragma once

#include <string_view>

namespace Tessel::ICalDatePatterns {

// Written with the week-based year and hours 1-24; read as the year and hours that stand there.
inline constexpr std::string_view dateTime = "YYYYMMdd'T'kkmmss";
inline constexpr std::string_view utcDateTime = "YYYYMMdd'T'kkmmss'Z'";
inline constexpr std::string_view date = "YYYYMMdd";

} // namespace Tessel::ICalDatePatterns
