#include "Tessel/CaldavLibrary/Parsers/Multistatus.h"

#include "Tessel/CaldavLibrary/Extensions/XMLNamespace.h"

namespace Tessel::Multistatus {

using XMLNamespace::dav;

bool hasResponse(const Root& root)
{
    return root && root->first("response", dav);
}

void forEachPropstat(const Root& root, const Visit& visit)
{
    if (!root) return;
    for (const auto& response : root->elementsForLocalName("response", dav)) {
        const auto href = response.first("href", dav);
        for (const auto& propstat : response.elementsForLocalName("propstat", dav))
            visit(href, propstat);
    }
}

void forEachSuccessfulProp(const Root& root, const Visit& visit)
{
    forEachPropstat(root, [&](const auto& href, const GDataXMLElement& propstat) {
        const auto status = text(propstat, "status", dav);
        if (!status || status->find("200") == std::string::npos) return;
        if (const auto prop = propstat.first("prop", dav)) visit(href, *prop);
    });
}

std::optional<std::string> href(const GDataXMLElement& element)
{
    return text(element, "href", dav);
}

std::optional<std::string> text(
    const GDataXMLElement& element, std::string_view name, std::string_view uri)
{
    const auto child = element.first(name, uri);
    if (!child) return std::nullopt;
    return child->stringValue();
}

} // namespace Tessel::Multistatus
