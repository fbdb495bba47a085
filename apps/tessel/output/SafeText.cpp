#include "apps/tessel/output/SafeText.h"

#include <Tessel/Platform/Foundation/Text/UTF8.h>

#include <array>
#include <cstdint>
#include <cstdio>

namespace Tessel::App {

namespace {

bool steers(std::uint32_t c)
{
    const auto isWithin
        = [c](std::uint32_t from, std::uint32_t to) { return c >= from && c <= to; };
    return c < 0x20 || isWithin(0x7f, 0x9f) // C0, DEL, C1
        || c == 0x61c || isWithin(0x200e, 0x200f) // marks of direction
        || isWithin(0x2028, 0x202e) // separators; embeddings and overrides
        || isWithin(0x2066, 0x2069); // isolates
}

std::string formatted(const char* pattern, std::uint32_t value)
{
    std::array<char, 16> text {};
    std::snprintf(text.data(), text.size(), pattern, value);
    return text.data();
}

template <class Escape>
std::string replaced(std::string_view text, bool keepsLineEnds, const Escape& escape)
{
    std::string out;
    out.reserve(text.size());
    while (!text.empty()) {
        const auto c = firstCharacter(text);
        if (!c.isValid || (steers(c.codePoint) && !(keepsLineEnds && c.codePoint == '\n'))) {
            out += escape(c);
        } else {
            out += text.substr(0, c.size);
        }
        text.remove_prefix(c.size);
    }
    return out;
}

std::string visible(const Character& c)
{
    return formatted(c.isValid ? "\\u{%x}" : "\\x{%x}", c.codePoint);
}

} // namespace

Character firstCharacter(std::string_view text)
{
    const auto lead = static_cast<unsigned char>(text.front());
    if (lead < 0x80) return {.codePoint = lead};
    const std::size_t size = lead >= 0xf0 ? 4 : lead >= 0xe0 ? 3 : 2;
    if (lead < 0xc0 || text.size() < size || !isValidUTF8(text.substr(0, size)))
        return {.codePoint = lead, .isValid = false};
    std::uint32_t codePoint = lead & (0xffU >> (size + 1));
    for (const char c : text.substr(1, size - 1))
        codePoint = codePoint << 6 | (static_cast<unsigned char>(c) & 0x3fU);
    return {.size = size, .codePoint = codePoint};
}

std::string shown(std::string_view text)
{
    return replaced(
        text, false, [](const Character& c) { return c.codePoint == '\n' ? " " : visible(c); });
}

std::string shownLines(std::string_view text)
{
    return replaced(text, true, [](const Character& c) {
        // iCalendar's lines end with CR LF.
        return c.codePoint == '\r' ? std::string() : visible(c);
    });
}

std::string shortened(std::string text, std::size_t most)
{
    std::size_t characters = 0;
    std::size_t last = 0; // where the ellipsis would stand
    for (std::size_t i = 0; i < text.size(); ++i) {
        if ((static_cast<unsigned char>(text[i]) & 0xc0U) == 0x80) continue;
        if (++characters == most) last = i;
        if (characters > most) return text.replace(last, text.npos, "…");
    }
    return text;
}

std::string escapedJson(std::string_view json)
{
    return replaced(
        json, false, [](const Character& c) { return formatted("\\u%04x", c.codePoint); });
}

} // namespace Tessel::App
