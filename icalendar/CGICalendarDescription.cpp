#include "icalendar/CGICalendarDescription.h"

#include <array>
#include <charconv>

namespace Tessel {

static std::string shortestDecimal(auto number)
{
    std::array<char, 32> digits;
    const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), number).ptr;
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
