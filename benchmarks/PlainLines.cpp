#include "benchmarks/PlainLines.h"

namespace Tessel::Benchmarks {

static PlainLine split(std::string_view line)
{
    PlainLine result;
    const auto colon = line.find(':');
    if (colon == line.npos) return result;
    result.value = line.substr(colon + 1);

    auto head = line.substr(0, colon);
    auto semicolon = head.find(';');
    result.name = head.substr(0, semicolon);
    while (semicolon != head.npos) {
        head.remove_prefix(semicolon + 1);
        semicolon = head.find(';');
        const auto parameter = head.substr(0, semicolon);
        const auto equals = parameter.find('=');
        if (equals == parameter.npos) continue;
        result.parameters.emplace_back(parameter.substr(0, equals), parameter.substr(equals + 1));
    }
    return result;
}

std::vector<PlainLine> unfoldAndSplit(std::string_view text)
{
    std::vector<PlainLine> lines;
    std::string logical;
    while (!text.empty()) {
        const auto end = text.find('\n');
        auto line = text.substr(0, end);
        text.remove_prefix(end == text.npos ? text.size() : end + 1);
        if (line.ends_with('\r')) line.remove_suffix(1);
        logical += line;
        if (text.starts_with(' ') || text.starts_with('\t')) {
            text.remove_prefix(1);
            continue;
        }
        lines.push_back(split(logical));
        logical.clear();
    }
    return lines;
}

std::string appendAndFold(const std::vector<PlainLine>& lines)
{
    constexpr std::size_t foldedBytes = 75;
    std::string text;
    std::string line;
    for (const auto& [name, parameters, value] : lines) {
        line = name;
        for (const auto& [key, content] : parameters) {
            line += ';';
            line += key;
            line += '=';
            line += content;
        }
        line += ':';
        line += value;
        for (std::size_t begin = 0; begin < line.size(); begin += foldedBytes) {
            if (begin != 0) text += "\r\n ";
            text.append(line, begin, foldedBytes);
        }
        text += '\n';
    }
    return text;
}

} // namespace Tessel::Benchmarks
