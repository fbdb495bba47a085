#include "Tessel/Session/Text/ContentLine.h"

#include <algorithm>

namespace Tessel {

namespace {

constexpr std::size_t mostOctets = 75;

bool isControl(char c)
{
    return (static_cast<unsigned char>(c) < 0x20 && c != '\t') || c == 0x7F;
}

bool isInsideCharacter(char c)
{
    return (static_cast<unsigned char>(c) & 0xC0) == 0x80;
}

/// Appends a parameter value; no more than needed is quoted, as some readers keep the quotes.
void appendParameter(std::string& line, std::string_view value)
{
    const bool isQuoted = value.find_first_of(":;,") != value.npos;
    if (isQuoted) line += '"';
    for (const char c : value) {
        if (c == '^')
            line += "^^";
        else if (c == '"')
            line += "^'";
        else if (c == '\n')
            line += "^n";
        else if (!isControl(c))
            line += c;
    }
    if (isQuoted) line += '"';
}

} // namespace

std::string foldedLine(std::string_view line, std::string_view lineEnd)
{
    std::string text;
    text.reserve(line.size() + (line.size() / mostOctets + 1) * (lineEnd.size() + 1));
    auto room = mostOctets;
    while (line.size() > room) {
        auto size = room;
        // A character has up to four bytes; what has more is no UTF-8 and may be cut anywhere.
        for (int i = 0; i < 3 && isInsideCharacter(line[size]); ++i)
            --size;
        if (isInsideCharacter(line[size])) size = room;
        text.append(line.substr(0, size)).append(lineEnd).append(" ");
        line.remove_prefix(size);
        room = mostOctets - 1;
    }
    return text.append(line).append(lineEnd);
}

std::string contentLine(std::string_view name, const TextParameters& parameters,
    std::string_view value, std::string_view lineEnd)
{
    std::string line(name);
    for (const auto& parameter : parameters) {
        line.append(";").append(parameter.name).append("=");
        bool isFirst = true;
        for (const auto& one : parameter.values) {
            if (!isFirst) line += ',';
            isFirst = false;
            appendParameter(line, one);
        }
    }
    line += ':';
    std::copy_if(
        value.begin(), value.end(), std::back_inserter(line), [](char c) { return !isControl(c); });
    return foldedLine(line, lineEnd);
}

std::string escapedText(std::string_view plain)
{
    std::string text;
    text.reserve(plain.size());
    for (std::size_t i = 0; i < plain.size(); ++i) {
        const char c = plain[i];
        if (c == '\\' || c == ';' || c == ',')
            text.append(1, '\\').append(1, c);
        else if (c == '\n' || (c == '\r' && !plain.substr(i + 1).starts_with('\n')))
            text += "\\n";
        else if (!isControl(c))
            text += c;
    }
    return text;
}

std::string plainText(std::string_view escaped)
{
    std::string text;
    text.reserve(escaped.size());
    for (std::size_t i = 0; i < escaped.size(); ++i) {
        if (escaped[i] != '\\' || i + 1 == escaped.size()) {
            text += escaped[i];
            continue;
        }
        const char next = escaped[++i];
        text += next == 'n' || next == 'N' ? '\n' : next;
    }
    return text;
}

std::vector<std::string> plainTexts(std::string_view escaped)
{
    std::vector<std::string> texts;
    std::size_t begin = 0;
    for (std::size_t i = 0; i < escaped.size(); ++i) {
        if (escaped[i] == '\\') {
            ++i;
        } else if (escaped[i] == ',') {
            texts.push_back(plainText(escaped.substr(begin, i - begin)));
            begin = i + 1;
        }
    }
    texts.push_back(plainText(escaped.substr(begin)));
    return texts;
}

} // namespace Tessel
