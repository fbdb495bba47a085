#include "Tessel/CaldavLibrary/Parsers/MRVEventDescriptorsParser.h"

#include "Tessel/CaldavLibrary/Extensions/XMLNamespace.h"
#include "Tessel/CaldavLibrary/Parsers/Multistatus.h"

namespace Tessel {

using XMLNamespace::dav;

std::optional<std::vector<std::shared_ptr<MRVEventDescriptor>>>
MRVEventDescriptorsParser::parseEventsDescription() const
{
    std::vector<std::shared_ptr<MRVEventDescriptor>> descriptors;
    for (const auto& response : Multistatus::responses(rootElement())) {
        const auto href = response.first("href", dav);
        if (!href) continue;
        for (const auto& propstat : response.elementsForLocalName("propstat", dav)) {
            const auto prop = Multistatus::successfulProp(propstat);
            if (!prop) continue;
            const auto eTag = prop->first("getetag", dav);
            if (!eTag) continue;
            descriptors.push_back(std::make_shared<MRVEventDescriptor>(
                MRVEventDescriptor {.eTag = eTag->stringValue().value_or(""),
                    .href = href->stringValue().value_or("")}));
        }
    }
    if (descriptors.empty()) return std::nullopt;
    return descriptors;
}

} // namespace Tessel
