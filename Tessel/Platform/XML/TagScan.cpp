#include "Tessel/Platform/XML/TagScan.h"

namespace Tessel {

namespace {

constexpr auto npos = std::string_view::npos;

struct Section {
    std::string_view start;
    std::string_view end;
};

/// What starts with "<" and is no tag.
constexpr Section sections[] = {{"<!--", "-->"}, {"<![CDATA[", "]]>"}, {"<?", "?>"}};

/// Where the section that starts at `at` ends; `at` itself when it is a tag.
std::size_t endOfSection(std::string_view document, std::size_t at)
{
    for (const auto& [start, end] : sections) {
        if (document.compare(at, start.size(), start) != 0) continue;
        const auto found = document.find(end, at + start.size());
        return found == npos ? document.size() : found + end.size();
    }
    return at;
}

} // namespace

bool hasTagWithMoreAttributes(std::string_view document, std::size_t limit)
{
    for (auto at = document.find('<'); at != npos; at = document.find('<', at)) {
        const char next = at + 1 < document.size() ? document[at + 1] : '\0';
        const bool mayBeSection = next == '!' || next == '?';
        if (const auto end = mayBeSection ? endOfSection(document, at) : at; end != at) {
            at = end;
            continue;
        }
        std::size_t values = 0;
        for (++at; at < document.size() && document[at] != '>'; ++at) {
            if (document[at] != '"' && document[at] != '\'') continue;
            if (++values > limit) return true;
            at = document.find(document[at], at + 1);
            if (at == npos) return false;
        }
    }
    return false;
}

} // namespace Tessel
