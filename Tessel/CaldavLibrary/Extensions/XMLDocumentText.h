#pragma once

#include "Tessel/Platform/XML/GDataXMLElement.h"

#include <string>

namespace Tessel {

inline constexpr const char* xmlDeclaration = "<?xml version=\"1.0\" encoding=\"utf-8\" ?>";

/// The document that a request carries: the declaration directly followed by the element.
inline std::string xmlDocumentText(const GDataXMLElement& root)
{
    return xmlDeclaration + root.XMLString();
}

} // namespace Tessel
