#include "Tessel/Platform/XML/GDataXMLDocument.h"

#include "Tessel/Platform/XML/DocumentReader.h"

namespace Tessel {

std::shared_ptr<GDataXMLDocument> GDataXMLDocument::parse(std::string_view bytes, Error& error)
{
    DocumentReader reader(bytes);
    const auto tree = reader.read();
    if (!tree) {
        error = reader.error();
        return nullptr;
    }
    xmlNode* const root = xmlDocGetRootElement(tree.get());
    return std::shared_ptr<GDataXMLDocument>(new GDataXMLDocument(GDataXMLElement(tree, root)));
}

} // namespace Tessel
