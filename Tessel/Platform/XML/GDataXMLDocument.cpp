#include "Tessel/Platform/XML/GDataXMLDocument.h"

#include "Tessel/Platform/XML/DocumentReader.h"

namespace Tessel {

std::shared_ptr<GDataXMLDocument> GDataXMLDocument::parse(std::string_view bytes, Error& error)
{
    DocumentReader reader(bytes);
    auto document = make(reader.read());
    if (!document) error = reader.error();
    return document;
}

std::shared_ptr<GDataXMLDocument> GDataXMLDocument::parse(
    std::string_view bytes, Error& error, const ChildVisitor& visit)
{
    DocumentReader reader(bytes);
    auto document = make(reader.read([&](xmlDoc* tree, xmlNode* child) {
        // The reader owns the tree.
        visit(GDataXMLElement(std::shared_ptr<xmlDoc>(std::shared_ptr<void>(), tree), child));
    }));
    if (!document) error = reader.error();
    return document;
}

std::shared_ptr<GDataXMLDocument> GDataXMLDocument::make(std::shared_ptr<xmlDoc> tree)
{
    if (!tree) return nullptr;
    auto* const root = xmlDocGetRootElement(tree.get());
    return std::shared_ptr<GDataXMLDocument>(
        new GDataXMLDocument(GDataXMLElement(std::move(tree), root)));
}

} // namespace Tessel
