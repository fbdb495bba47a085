#pragma once

#include "Tessel/Platform/Foundation/Base/Export.h"

#include <memory>
#include <optional>
#include <string>
#include <string_view>

struct _xmlDoc;
struct _xmlNode;

namespace Tessel {

/// One node of an XML tree: a cheap handle that keeps its whole tree alive. A tree is used by one
/// thread at a time.
class TESSEL_EXPORT GDataXMLNode {
public:
    /// The name without its prefix.
    std::string_view name() const;
    /// The namespace URI, empty without a namespace. Both views live as long as the tree.
    std::string_view URI() const;

    /// All text within the node, CDATA included, in document order; absent when it holds none.
    /// Carriage returns are as XML defines them: line ends arrive as "\n" (XML 1.0, 2.11), only
    /// character references bring a "\r".
    std::optional<std::string> stringValue() const;

    /// The node as XML text, every namespace in use declared.
    std::string XMLString() const;

protected:
    /// A node of `tree`.
    GDataXMLNode(std::shared_ptr<_xmlDoc> tree, _xmlNode* node)
        : tree_(std::move(tree))
        , node_(node)
    {
    }

    std::shared_ptr<_xmlDoc> tree_; ///< held
    _xmlNode* node_; ///< of `tree_`
};

} // namespace Tessel
