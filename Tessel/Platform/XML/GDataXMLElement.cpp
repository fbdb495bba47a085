#include "Tessel/Platform/XML/GDataXMLElement.h"

#include "Tessel/Platform/Foundation/Text/UTF8.h"
#include "Tessel/Platform/XML/LibXML.h"
#include "Tessel/Platform/XML/XMLText.h"

#include <libxml/tree.h>

#include <algorithm>
#include <new>

namespace Tessel {

namespace {

using XMLText::Terminated;

template <class Made> Made* checked(Made* made)
{
    if (!made) throw std::bad_alloc();
    return made;
}

bool isElement(const xmlNode* node, std::string_view name, std::string_view uri)
{
    return node->type == XML_ELEMENT_NODE && XMLText::equal(node->name, name)
        && (node->ns ? XMLText::equal(node->ns->href, uri) : uri.empty());
}

/// The tree's one undeclared namespace object for `uri`. The tree owns it; writing the tree
/// replaces it by the declaration that is in scope.
xmlNs* undeclaredNamespace(xmlDoc* tree, xmlNode* root, std::string_view uri)
{
    // The head of the list is the "xml" namespace, which this look-up makes.
    xmlSearchNs(tree, root, Terminated("xml"));
    xmlNs* last = checked(tree->oldNs);
    for (; last->next; last = last->next) {
        if (XMLText::equal(last->next->href, uri)) return last->next;
    }
    return last->next = checked(xmlNewNs(nullptr, Terminated(uri), nullptr));
}

bool isXMLCharacter(unsigned char c)
{
    return c >= 0x20 || c == '\t' || c == '\n' || c == '\r';
}

/// The part of `text` that XML 1.0 can hold (2.2, Char).
std::string xmlCharacters(std::string_view text)
{
    const auto isPrintable = [](char c) { return c >= ' ' && c <= '~'; };
    if (std::all_of(text.begin(), text.end(), isPrintable)) return std::string(text);
    std::string held;
    held.reserve(text.size());
    while (!text.empty()) {
        const auto lead = static_cast<unsigned char>(text[0]);
        const std::size_t length = lead < 0x80 ? 1 : lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
        const auto character = text.substr(0, length);
        const bool noncharacter = character == "\xEF\xBF\xBE" || character == "\xEF\xBF\xBF";
        if (isXMLCharacter(lead) && !noncharacter && isValidUTF8(character)) {
            held += character;
            text.remove_prefix(length);
        } else {
            text.remove_prefix(1);
        }
    }
    return held;
}

} // namespace

GDataXMLElement GDataXMLElement::elementWithName(std::string_view name, std::string_view uri)
{
    prepareLibXML();
    const std::shared_ptr<xmlDoc> tree(checked(xmlNewDoc(Terminated("1.0"))), xmlFreeDoc);
    xmlNode* const node = checked(xmlNewDocNode(tree.get(), nullptr, Terminated(name), nullptr));
    xmlDocSetRootElement(tree.get(), node);
    xmlSetNs(node, undeclaredNamespace(tree.get(), node, uri));
    return GDataXMLElement(tree, node);
}

GDataXMLElement GDataXMLElement::addElement(std::string_view name, std::string_view uri)
{
    xmlNode* const node = checked(xmlNewChild(node_, nullptr, Terminated(name), nullptr));
    xmlSetNs(node, undeclaredNamespace(tree_.get(), node_, uri));
    return GDataXMLElement(tree_, node);
}

GDataXMLElement GDataXMLElement::addElement(
    std::string_view name, std::string_view uri, std::string_view text)
{
    auto element = addElement(name, uri);
    element.setStringValue(text);
    return element;
}

void GDataXMLElement::addNamespace(std::string_view prefix, std::string_view uri)
{
    xmlNewNs(node_, Terminated(uri), Terminated(prefix));
}

void GDataXMLElement::setStringValue(std::string_view text)
{
    xmlNodeSetContent(node_, nullptr);
    const Terminated content(xmlCharacters(text));
    xmlAddChild(node_, checked(xmlNewDocText(tree_.get(), content)));
}

std::vector<GDataXMLElement> GDataXMLElement::elementsForLocalName(
    std::string_view name, std::string_view uri) const
{
    std::vector<GDataXMLElement> elements;
    for (xmlNode* child = node_->children; child; child = child->next) {
        if (isElement(child, name, uri)) elements.push_back(GDataXMLElement(tree_, child));
    }
    return elements;
}

std::optional<GDataXMLElement> GDataXMLElement::first(
    std::string_view name, std::string_view uri) const
{
    for (xmlNode* child = node_->children; child; child = child->next) {
        if (isElement(child, name, uri)) return GDataXMLElement(tree_, child);
    }
    return std::nullopt;
}

std::vector<GDataXMLElement> GDataXMLElement::children() const
{
    std::vector<GDataXMLElement> elements;
    for (xmlNode* child = xmlFirstElementChild(node_); child;
         child = xmlNextElementSibling(child)) {
        elements.push_back(GDataXMLElement(tree_, child));
    }
    return elements;
}

std::optional<std::string> GDataXMLElement::attribute(std::string_view name) const
{
    const std::unique_ptr<xmlChar, void (*)(void*)> value(
        xmlGetNoNsProp(node_, Terminated(name)), [](void* text) { xmlFree(text); });
    if (!value) return std::nullopt;
    return std::string(XMLText::view(value.get()));
}

void GDataXMLElement::setAttribute(std::string_view name, std::string_view value)
{
    checked(xmlSetProp(node_, Terminated(name), Terminated(xmlCharacters(value))));
}

} // namespace Tessel
