#include "Tessel/CaldavLibrary/Parsers/MRVEventDescriptorsParser.h"

#include "Tessel/CaldavLibrary/Extensions/XMLNamespace.h"
#include "Tessel/CaldavLibrary/Parsers/Multistatus.h"

namespace Tessel {

std::optional<std::vector<std::shared_ptr<MRVEventDescriptor>>>
MRVEventDescriptorsParser::parseEventsDescription() const
{
    std::vector<std::shared_ptr<MRVEventDescriptor>> descriptors;
    Multistatus::forEachSuccessfulProp(
        rootElement(), [&](const auto& href, const GDataXMLElement& prop) {
            const auto eTag = prop.first("getetag", XMLNamespace::dav);
            if (!href || !eTag) return;
            descriptors.push_back(std::make_shared<MRVEventDescriptor>(
                MRVEventDescriptor {.eTag = eTag->stringValue().value_or(""),
                    .href = href->stringValue().value_or("")}));
        });
    if (descriptors.empty()) return std::nullopt;
    return descriptors;
}

} // namespace Tessel
