#pragma once

#include <optional>
#include <string_view>

namespace Tessel {

/// A name and a value, each absent or a view into the text that was split.
struct ParameterParts {
    std::optional<std::string_view> name;
    std::optional<std::string_view> value;
};

/// Splits "NAME=value"; neither is there without an "=".
inline ParameterParts splitParameter(std::string_view text)
{
    const auto equals = text.find('=');
    if (equals == text.npos) return {};
    const auto value = text.substr(equals + 1);
    return {text.substr(0, equals), value.substr(0, value.find('='))};
}

/// An unfolded line, as views into it.
struct ContentLineParts {
    std::string_view name;
    std::optional<std::string_view> parameters; ///< all between the name's semicolon and the colon
    std::string_view value;
};

/// Removes newline characters (LF VT FF CR NEL U+2028 U+2029 in UTF-8) from both ends.
std::string_view trimNewlines(std::string_view line);

/// Splits a trimmed line at its first colon and the part before it at its first semicolon; none
/// without a colon.
inline std::optional<ContentLineParts> splitContentLine(std::string_view line)
{
    // Names are short: looking at each character beats two searches.
    std::size_t end = 0;
    while (end != line.size() && line[end] != ':' && line[end] != ';')
        ++end;
    if (end == line.size()) return std::nullopt;

    const auto name = line.substr(0, end);
    if (line[end] == ':') return ContentLineParts {name, std::nullopt, line.substr(end + 1)};

    const auto colon = line.find(':', end + 1);
    if (colon == line.npos) return std::nullopt;
    return ContentLineParts {name, line.substr(end + 1, colon - end - 1), line.substr(colon + 1)};
}

/// Calls `visit` with each parameter of the text between a line's name and its colon.
inline void forEachParameter(std::optional<std::string_view> parameters, const auto& visit)
{
    if (!parameters) return;
    auto rest = *parameters;
    for (;;) {
        const auto semicolon = rest.find(';');
        visit(splitParameter(rest.substr(0, semicolon)));
        if (semicolon == rest.npos) return;
        rest.remove_prefix(semicolon + 1);
    }
}

} // namespace Tessel
