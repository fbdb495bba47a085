#pragma once

#include "Tessel/Platform/Foundation/Base/Export.h"
#include "Tessel/Platform/XML/GDataXMLNode.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace Tessel {

/// An element, read from a document or built. Elements are looked up by local name and namespace
/// URI (Namespaces in XML 1.0, 5), never by prefix.
class TESSEL_EXPORT GDataXMLElement final : public GDataXMLNode {
public:
    /// A new root element of a tree of its own.
    static GDataXMLElement elementWithName(std::string_view name, std::string_view uri);

    /// Appends a new child element and returns it; with a text it holds that text.
    GDataXMLElement addElement(std::string_view name, std::string_view uri);
    /// The same with a text.
    GDataXMLElement addElement(std::string_view name, std::string_view uri, std::string_view text);

    /// Declares a namespace on this element. Elements of that namespace are written with the
    /// prefix.
    void addNamespace(std::string_view prefix, std::string_view uri);

    /// Replaces the content. What XML cannot hold (control characters, bytes that are not UTF-8) is
    /// left out, everything else is escaped as needed.
    void setStringValue(std::string_view text);

    /// The direct child elements with this local name and namespace.
    std::vector<GDataXMLElement> elementsForLocalName(
        std::string_view name, std::string_view uri) const;
    /// The first direct child element with this local name and namespace.
    std::optional<GDataXMLElement> first(std::string_view name, std::string_view uri) const;
    /// The child elements of any name.
    std::vector<GDataXMLElement> children() const;

    /// Without a namespace; none where there is none.
    std::optional<std::string> attribute(std::string_view name) const;
    void setAttribute(std::string_view name, std::string_view value); ///< replaces it, or adds it

private:
    friend class GDataXMLDocument;
    using GDataXMLNode::GDataXMLNode;
};

} // namespace Tessel
