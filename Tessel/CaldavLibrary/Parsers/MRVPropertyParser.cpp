#include "Tessel/CaldavLibrary/Parsers/MRVPropertyParser.h"

#include "Tessel/CaldavLibrary/Extensions/XMLNamespace.h"
#include "Tessel/CaldavLibrary/Parsers/Multistatus.h"

#include <algorithm>
#include <charconv>
#include <string_view>

namespace Tessel {

namespace {

constexpr std::string_view blanks = " \t\r\n";

void skip(std::string_view& text, std::size_t end)
{
    text.remove_prefix(std::min(end, text.size()));
}

/// The status of a line such as "HTTP/1.1 200 OK", which may stand between blanks.
int status(std::string_view line)
{
    skip(line, line.find_first_not_of(blanks));
    skip(line, line.find_first_of(blanks));
    skip(line, line.find_first_not_of(blanks));
    int code = 0;
    std::from_chars(line.data(), line.data() + line.size(), code);
    return code;
}

} // namespace

std::optional<MRVPropertyParser::Statuses> MRVPropertyParser::parseProperties() const
{
    const auto root = rootElement();
    if (!root) return std::nullopt;

    Statuses statuses;
    Multistatus::forEachPropstat(*root, [&](const auto&, const GDataXMLElement& propstat) {
        const auto prop = propstat.first("prop", XMLNamespace::dav);
        const auto line = Multistatus::text(propstat, "status", XMLNamespace::dav);
        if (!prop || !line) return;
        const int code = status(*line);
        for (const auto& property : prop->children())
            statuses[{std::string(property.URI()), std::string(property.name())}] = code;
    });
    return statuses;
}

} // namespace Tessel
