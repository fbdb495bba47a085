#include "Tessel/icalendar/CGICalendarDescription.h"

#include <array>
#include <charconv>

namespace Tessel {

static std::string shortestDecimal(auto number)
{
    // The longest are the least doubles: a sign, "0." and 340 digits.
    std::array<char, 400> digits {};
    const auto end = std::to_chars(
        digits.data(), digits.data() + digits.size(), number, std::chars_format::fixed)
                         .ptr;
    return std::string(digits.data(), end);
}

std::string textualDescription(float number)
{
    return shortestDecimal(number);
}

std::string textualDescription(double number)
{
    return shortestDecimal(number);
}

} // namespace Tessel
