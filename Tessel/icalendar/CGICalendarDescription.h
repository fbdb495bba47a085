#pragma once

#include "Tessel/Platform/Foundation/Base/Export.h"

#include <concepts>
#include <string>
#include <string_view>

namespace Tessel {

/// An object with a text form of its own.
template <typename T>
concept Describable = requires(const T& object)
{
    {
        object.description()
        } -> std::convertible_to<std::string>;
};

/// The text that a value of an iCalendar property or parameter gets from an object: text as it
/// stands, a number in decimal (a fraction in the fewest digits that read back the same), any other
/// object its `description()`.
inline std::string textualDescription(std::string_view text)
{
    return std::string(text);
}
std::string textualDescription(std::integral auto number)
{
    return std::to_string(number);
}
TESSEL_EXPORT std::string textualDescription(float number);
TESSEL_EXPORT std::string textualDescription(double number);
std::string textualDescription(const Describable auto& object)
{
    return object.description();
}

} // namespace Tessel
