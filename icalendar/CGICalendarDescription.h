#pragma once

#include "Platform/Foundation/Export.h"

#include <concepts>
#include <cstdint>
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
/// stands, a number in decimal (a float in the fewest digits that read back the same), any other
/// object its `description()`.
inline std::string textualDescription(std::string_view text)
{
    return std::string(text);
}
TESSEL_EXPORT std::string textualDescription(std::int64_t number);
TESSEL_EXPORT std::string textualDescription(float number);
std::string textualDescription(const Describable auto& object)
{
    return object.description();
}

} // namespace Tessel
