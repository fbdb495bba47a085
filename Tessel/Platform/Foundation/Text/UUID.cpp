#include "Tessel/Platform/Foundation/Text/UUID.h"

#include <array>
#include <cstdint>
#include <random>

namespace Tessel {

std::string makeUUID()
{
    thread_local std::random_device device;
    std::array<std::uint8_t, 16> bytes {};
    for (std::size_t i = 0; i < bytes.size(); i += 4) {
        const std::uint32_t word = device();
        for (std::size_t j = 0; j < 4; ++j)
            bytes[i + j] = std::uint8_t(word >> (8 * j));
    }
    bytes[6] = std::uint8_t((bytes[6] & 0x0F) | 0x40);
    bytes[8] = std::uint8_t((bytes[8] & 0x3F) | 0x80);

    constexpr char digits[] = "0123456789ABCDEF";
    std::string text;
    text.reserve(36);
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        if (i == 4 || i == 6 || i == 8 || i == 10) text += '-';
        text += digits[bytes[i] >> 4];
        text += digits[bytes[i] & 0x0F];
    }
    return text;
}

} // namespace Tessel
