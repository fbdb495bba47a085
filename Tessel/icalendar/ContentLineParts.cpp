#include "Tessel/icalendar/ContentLineParts.h"

#include <array>
#include <cstddef>

namespace Tessel {

static constexpr std::array<std::string_view, 7> newlines {
    "\n", "\v", "\f", "\r", "\xC2\x85", "\xE2\x80\xA8", "\xE2\x80\xA9"};

static std::size_t leadingNewline(std::string_view line)
{
    for (const auto newline : newlines) {
        if (line.starts_with(newline)) return newline.size();
    }
    return 0;
}

static std::size_t trailingNewline(std::string_view line)
{
    for (const auto newline : newlines) {
        if (line.ends_with(newline)) return newline.size();
    }
    return 0;
}

static bool mayBeNewline(char c)
{
    const auto byte = static_cast<unsigned char>(c);
    return byte >= 0x80 || (byte >= '\n' && byte <= '\r');
}

std::string_view trimNewlines(std::string_view line)
{
    while (!line.empty() && mayBeNewline(line.front())) {
        const auto size = leadingNewline(line);
        if (size == 0) break;
        line.remove_prefix(size);
    }
    while (!line.empty() && mayBeNewline(line.back())) {
        const auto size = trailingNewline(line);
        if (size == 0) break;
        line.remove_suffix(size);
    }
    return line;
}

} // namespace Tessel
