#include "Tessel/Platform/Foundation/Text/Base64.h"

#include <cstdint>

namespace Tessel {

std::string base64Encoded(std::string_view bytes)
{
    constexpr char alphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string text;
    text.reserve((bytes.size() + 2) / 3 * 4);
    for (std::size_t i = 0; i < bytes.size(); i += 3) {
        const auto octet = [&](std::size_t k) {
            return i + k < bytes.size() ? std::uint32_t(std::uint8_t(bytes[i + k])) : 0u;
        };
        const std::uint32_t group = octet(0) << 16 | octet(1) << 8 | octet(2);
        text += alphabet[group >> 18];
        text += alphabet[group >> 12 & 63];
        text += i + 1 < bytes.size() ? alphabet[group >> 6 & 63] : '=';
        text += i + 2 < bytes.size() ? alphabet[group & 63] : '=';
    }
    return text;
}

} // namespace Tessel
