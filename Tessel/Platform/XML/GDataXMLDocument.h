#pragma once

#include "Tessel/Platform/Foundation/Base/Error.h"
#include "Tessel/Platform/Foundation/Base/Export.h"
#include "Tessel/Platform/XML/GDataXMLElement.h"

#include <functional>
#include <memory>
#include <optional>
#include <string_view>

namespace Tessel {

/// A parsed XML document.
class TESSEL_EXPORT GDataXMLDocument {
public:
    /// Reads UTF-8 XML. Null for anything that is not well-formed, and then `error` says why. A
    /// document with a DOCTYPE counts as malformed: no entity is ever expanded and nothing is ever
    /// fetched. So does one that would cost more than its bytes are worth: the most are 256
    /// attributes of a tag, 100 levels of elements, 128 namespaces in scope, 4096 different names
    /// and 4 million nodes. A text may be as long as memory allows. Comments and processing
    /// instructions are not kept.
    static std::shared_ptr<GDataXMLDocument> parse(std::string_view bytes, Error& error);

    /// Takes a child of the root; it and all that is read from it hold only until this returns.
    using ChildVisitor = std::function<void(const GDataXMLElement&)>;
    /// The same for large documents, of which memory holds one child of the root at a time: each is
    /// given to `visit` as soon as it has been read, also where the document turns out malformed
    /// later, and is not kept. What `visit` throws comes out of here.
    static std::shared_ptr<GDataXMLDocument> parse(
        std::string_view bytes, Error& error, const ChildVisitor& visit);

    /// Holds the tree as the document does.
    const GDataXMLElement& rootElement() const { return root_; }

private:
    static std::shared_ptr<GDataXMLDocument> make(std::shared_ptr<_xmlDoc> tree);

    explicit GDataXMLDocument(GDataXMLElement root)
        : root_(std::move(root))
    {
    }

    GDataXMLElement root_;
};

} // namespace Tessel
