#include "Tessel/Platform/Foundation/Text/UTF8.h"

#include <cstdint>
#include <cstring>

namespace Tessel {

bool isValidUTF8(std::string_view bytes)
{
    const auto* p = reinterpret_cast<const unsigned char*>(bytes.data());
    const auto* const end = p + bytes.size();
    const auto continues = [&](int k) { return (p[k] & 0xC0) == 0x80; };

    while (p != end) {
        // Calendar text is mostly ASCII: eight bytes at a time.
        while (end - p >= 8) {
            std::uint64_t word;
            std::memcpy(&word, p, 8);
            if (word & 0x8080808080808080u) break;
            p += 8;
        }
        if (p == end) break;
        const auto left = end - p;
        if (p[0] < 0x80) {
            p += 1;
        } else if (p[0] >= 0xC2 && p[0] <= 0xDF && left >= 2 && continues(1)) {
            p += 2;
        } else if ((p[0] & 0xF0) == 0xE0 && left >= 3 && continues(1) && continues(2)
            && (p[0] != 0xE0 || p[1] >= 0xA0) && (p[0] != 0xED || p[1] < 0xA0)) {
            p += 3;
        } else if (p[0] >= 0xF0 && p[0] <= 0xF4 && left >= 4 && continues(1) && continues(2)
            && continues(3) && (p[0] != 0xF0 || p[1] >= 0x90) && (p[0] != 0xF4 || p[1] < 0x90)) {
            p += 4;
        } else {
            return false;
        }
    }
    return true;
}

std::size_t codePointCount(std::string_view text)
{
    std::size_t count = 0;
    for (const char c : text)
        count += (static_cast<unsigned char>(c) & 0xC0) != 0x80;
    return count;
}

} // namespace Tessel
