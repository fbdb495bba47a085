#include "Tessel/Platform/XML/GDataXMLNode.h"

#include "Tessel/Platform/XML/XMLText.h"

#include <libxml/tree.h>

namespace Tessel {

namespace {

/// The node after `node` in document order within `root`, without recursion.
const xmlNode* next(const xmlNode* node, const xmlNode* root)
{
    if (node->type == XML_ELEMENT_NODE && node->children) return node->children;
    while (node != root && !node->next)
        node = node->parent;
    return node == root ? nullptr : node->next;
}

} // namespace

std::string_view GDataXMLNode::name() const
{
    return XMLText::view(node_->name);
}

std::string_view GDataXMLNode::URI() const
{
    return node_->ns ? XMLText::view(node_->ns->href) : std::string_view();
}

std::optional<std::string> GDataXMLNode::stringValue() const
{
    std::optional<std::string> text;
    for (const xmlNode* node = node_; node; node = next(node, node_)) {
        if (node->type != XML_TEXT_NODE && node->type != XML_CDATA_SECTION_NODE) continue;
        if (!text) text.emplace();
        text->append(XMLText::view(node->content));
    }
    return text;
}

std::string GDataXMLNode::XMLString() const
{
    // Only `GDataXMLElement::addElement` leaves namespaces undeclared, behind the "xml" namespace.
    if (tree_->oldNs && tree_->oldNs->next) xmlReconciliateNs(tree_.get(), node_);
    const std::unique_ptr<xmlBuffer, decltype(&xmlBufferFree)> buffer(
        xmlBufferCreate(), xmlBufferFree);
    if (!buffer || xmlNodeDump(buffer.get(), tree_.get(), node_, 0, 0) < 0) throw std::bad_alloc();
    return std::string(XMLText::view(xmlBufferContent(buffer.get())));
}

} // namespace Tessel
