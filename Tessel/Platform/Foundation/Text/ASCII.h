#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <string_view>

namespace Tessel {

/// Whatever the locale of the process says.
constexpr char lower(char c)
{
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

constexpr bool isDigit(char c)
{
    return c >= '0' && c <= '9';
}

constexpr bool isAlpha(char c)
{
    return lower(c) >= 'a' && lower(c) <= 'z';
}

/// Letters, digits and what else a grammar allows; asked octet by octet in constant time.
class AlphanumericsAnd {
public:
    explicit constexpr AlphanumericsAnd(std::string_view others)
    {
        for (std::size_t octet = 0; octet < contains_.size(); ++octet) {
            const auto c = static_cast<char>(octet);
            contains_[octet] = isDigit(c) || isAlpha(c) || others.find(c) != std::string_view::npos;
        }
    }

    constexpr bool contains(char c) const { return contains_[static_cast<unsigned char>(c)]; }
    constexpr bool containsAll(std::string_view text) const
    {
        return std::all_of(text.begin(), text.end(), [this](char c) { return contains(c); });
    }

private:
    std::array<bool, 256> contains_ {};
};

} // namespace Tessel
