#pragma once

#include "Tessel/Platform/Foundation/Base/Export.h"
#include "Tessel/Platform/XML/GDataXMLElement.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// How a multistatus answer (RFC 4918, 13) is walked by every parser.
namespace Tessel::Multistatus {

/// The "DAV:" response children of the root, whose name is not checked.
std::vector<GDataXMLElement> responses(const std::optional<GDataXMLElement>& root);

/// The "DAV:" prop of a propstat whose status text contains "200"; none for any other propstat.
std::optional<GDataXMLElement> successfulProp(const GDataXMLElement& propstat);

/// The text of an element's first "DAV:" href child.
std::optional<std::string> href(const GDataXMLElement& element);

/// The text of a first child; none when the child is missing.
std::optional<std::string> text(
    const GDataXMLElement& element, std::string_view name, std::string_view uri);

} // namespace Tessel::Multistatus
