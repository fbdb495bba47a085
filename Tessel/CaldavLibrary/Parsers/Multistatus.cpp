#include "Tessel/CaldavLibrary/Parsers/Multistatus.h"

#include "Tessel/CaldavLibrary/Extensions/XMLNamespace.h"

namespace Tessel::Multistatus {

using XMLNamespace::dav;

std::vector<GDataXMLElement> responses(const std::optional<GDataXMLElement>& root)
{
    if (!root) return {};
    return root->elementsForLocalName("response", dav);
}

std::optional<GDataXMLElement> successfulProp(const GDataXMLElement& propstat)
{
    const auto status = text(propstat, "status", dav);
    if (!status || status->find("200") == std::string::npos) return std::nullopt;
    return propstat.first("prop", dav);
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
