#include "Tessel/CaldavLibrary/Operation/AccountInfo/PropfindBody.h"

#include "Tessel/CaldavLibrary/Extensions/XMLDocumentText.h"
#include "Tessel/CaldavLibrary/Extensions/XMLNamespace.h"
#include "Tessel/CaldavLibrary/Operation/MRVOperation.h"

namespace Tessel {

std::string propfindBody(std::initializer_list<PropertyName> properties)
{
    auto propfind = GDataXMLElement::elementWithName("propfind", XMLNamespace::dav);
    auto prop = propfind.addElement("prop", XMLNamespace::dav);
    for (const auto& [name, uri] : properties)
        prop.addElement(name, uri);
    MRVOperation::addXMLNamespaces(propfind);
    return xmlDocumentText(propfind);
}

} // namespace Tessel
