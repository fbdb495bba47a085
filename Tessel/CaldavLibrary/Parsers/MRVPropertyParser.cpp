#include "Tessel/CaldavLibrary/Parsers/MRVPropertyParser.h"

#include "Tessel/CaldavLibrary/Extensions/XMLNamespace.h"
#include "Tessel/CaldavLibrary/Parsers/Multistatus.h"

#include <charconv>

namespace Tessel {

namespace {

/// The status of a line such as "HTTP/1.1 200 OK".
int status(std::string_view line)
{
    const auto blank = line.find(' ');
    if (blank == std::string_view::npos) return 0;
    line.remove_prefix(blank + 1);
    int code = 0;
    std::from_chars(line.data(), line.data() + line.size(), code);
    return code;
}

} // namespace

MRVPropertyParser::Statuses MRVPropertyParser::parseProperties() const
{
    Statuses statuses;
    Multistatus::forEachPropstat(rootElement(), [&](const auto&, const GDataXMLElement& propstat) {
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
