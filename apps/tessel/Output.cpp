#include "apps/tessel/Output.h"

#include <array>
#include <cstdio>

namespace Tessel::App {

namespace {

constexpr std::string_view replacementCharacter = "\xef\xbf\xbd";

/// The length of the UTF-8 sequence of two to four bytes at the start of `text`, 0 when there is
/// none.
std::size_t sequenceLength(std::string_view text)
{
    const auto lead = static_cast<unsigned char>(text.front());
    const std::size_t length = lead >= 0xf0 ? 4 : lead >= 0xe0 ? 3 : 2;
    if (lead < 0xc2 || lead > 0xf4 || text.size() < length) return 0;

    std::uint32_t codePoint = lead & (0xffU >> (length + 1));
    for (std::size_t i = 1; i < length; ++i) {
        const auto byte = static_cast<unsigned char>(text[i]);
        if ((byte & 0xc0) != 0x80) return 0;
        codePoint = codePoint << 6 | (byte & 0x3f);
    }
    const bool isOverlong = codePoint < (length == 4 ? 0x10000U : length == 3 ? 0x800U : 0x80U);
    const bool isSurrogate = codePoint >= 0xd800 && codePoint < 0xe000;
    return isOverlong || isSurrogate || codePoint > 0x10ffff ? 0 : length;
}

/// Whether `text` starts with a control character of two bytes (U+0080 to U+009F), such as the one
/// that begins a terminal's commands as ESC [ does.
bool startsWithLongControl(std::string_view text)
{
    const unsigned char second = text.size() > 1 ? text[1] : 0;
    return text[0] == '\xc2' && second >= 0x80 && second < 0xa0;
}

void appendEscape(std::string& out, unsigned codeUnit)
{
    std::array<char, 8> escape {};
    std::snprintf(escape.data(), escape.size(), "\\u%04x", codeUnit);
    out += escape.data();
}

void appendQuoted(std::string& out, std::string_view text)
{
    out += '"';
    while (!text.empty()) {
        const auto byte = static_cast<unsigned char>(text.front());
        std::size_t length = 1;
        if (byte == '"' || byte == '\\') {
            out += '\\';
            out += text.front();
        } else if (byte < 0x20 || byte == 0x7f) {
            appendEscape(out, byte);
        } else if (startsWithLongControl(text)) {
            appendEscape(out, static_cast<unsigned char>(text[1]));
            length = 2;
        } else if (byte < 0x80) {
            out += text.front();
        } else if ((length = sequenceLength(text)) > 0) {
            out += text.substr(0, length);
        } else {
            length = 1;
            out += replacementCharacter;
        }
        text.remove_prefix(length);
    }
    out += '"';
}

struct Appender {
    std::string& out;

    void operator()(std::monostate) const { out += "null"; }
    void operator()(bool value) const { out += value ? "true" : "false"; }
    void operator()(std::int64_t value) const { out += std::to_string(value); }
    void operator()(const std::string& value) const { appendQuoted(out, value); }
    void operator()(const std::vector<std::string>& values) const
    {
        out += '[';
        for (std::size_t i = 0; i < values.size(); ++i) {
            if (i > 0) out += ',';
            appendQuoted(out, values[i]);
        }
        out += ']';
    }
};

/// A server's text must not steer the terminal.
std::string printable(std::string_view line, bool isOneLine = true)
{
    std::string text;
    text.reserve(line.size());
    while (!line.empty()) {
        const char c = line.front();
        const bool isLong = startsWithLongControl(line);
        const bool isShort = static_cast<unsigned char>(c) < 0x20 || c == 0x7f;
        const bool isControl = isLong || (isShort && (isOneLine || c != '\n'));
        text += isControl ? ' ' : c;
        line.remove_prefix(isLong ? 2 : 1);
    }
    return text;
}

} // namespace

std::string Output::json(const Fields& fields)
{
    std::string out = "{";
    for (const auto& [name, value] : fields) {
        if (out.size() > 1) out += ',';
        appendQuoted(out, name);
        out += ':';
        std::visit(Appender {out}, value);
    }
    return out + "}";
}

void Output::result(std::string_view line, const Fields& fields) const
{
    raw((json_ ? json(fields) : printable(line)) + "\n");
}

void Output::text(std::string_view lines, const Fields& fields) const
{
    raw(json_ ? json(fields) + "\n" : printable(lines, false));
}

void Output::failure(std::string_view message, const Fields& fields) const
{
    if (json_) return raw(json(fields) + "\n");
    std::fprintf(stderr, "tessel: %s\n", printable(message).c_str());
}

void Output::raw(std::string_view text)
{
    std::fwrite(text.data(), 1, text.size(), stdout);
    std::fflush(stdout);
}

Output::Value Output::orNull(const std::optional<std::string>& text)
{
    if (!text) return std::monostate {};
    return *text;
}

} // namespace Tessel::App
