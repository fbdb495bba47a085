#pragma once

#include <optional>

namespace Tessel {

/// The case of an enumeration with this raw value, or none. An enumeration takes part by an
/// overload `constexpr bool isRawValue(E, int)` beside it, which tells whether a number is one of
/// its cases.
template <class E> constexpr std::optional<E> fromRawValue(int rawValue)
{
    if (!isRawValue(E {}, rawValue)) return std::nullopt;
    return static_cast<E>(rawValue);
}

template <class E> constexpr int rawValue(E value)
{
    return static_cast<int>(value);
}

} // namespace Tessel
