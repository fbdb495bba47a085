#pragma once

#include "Tessel/Platform/Foundation/Base/Error.h"
#include "Tessel/Platform/Foundation/Base/Export.h"
#include "Tessel/Platform/XML/GDataXMLElement.h"

#include <memory>
#include <optional>
#include <string_view>

namespace Tessel {

/// A parsed XML document.
class TESSEL_EXPORT GDataXMLDocument {
public:
    /// Reads UTF-8 XML. Null for anything that is not well-formed, and then `error` says why. A
    /// document with a DOCTYPE counts as malformed: no entity is ever expanded and nothing is ever
    /// fetched. Texts are limited by memory only; so that a document is read in linear time, 256
    /// attributes of a tag, 256 levels of elements and 1024 namespaces in scope are the most.
    static std::shared_ptr<GDataXMLDocument> parse(std::string_view bytes, Error& error);

    const GDataXMLElement& rootElement() const { return root_; }

private:
    explicit GDataXMLDocument(GDataXMLElement root)
        : root_(std::move(root))
    {
    }

    GDataXMLElement root_;
};

} // namespace Tessel
