#pragma once

#include "Tessel/Platform/XML/GDataXMLElement.h"

#include <functional>
#include <optional>
#include <string>
#include <string_view>

/// How a multistatus answer (RFC 4918, 13) is walked by every parser; the root's name is not
/// checked, and without a root nothing is visited.
namespace Tessel::Multistatus {

using Root = std::optional<GDataXMLElement>;

/// Whether the root has a "DAV:" response.
bool hasResponse(const Root& root);

/// Gets the "DAV:" href of a response, if it has one, with one of its elements.
using Visit
    = std::function<void(const std::optional<GDataXMLElement>& href, const GDataXMLElement&)>;

/// Visits every propstat of every response, in document order.
void forEachPropstat(const Root& root, const Visit& visit);

/// Visits the first prop of every propstat whose status text contains "200".
void forEachSuccessfulProp(const Root& root, const Visit& visit);

/// The text of an element's first "DAV:" href child.
std::optional<std::string> href(const GDataXMLElement& element);

/// The text of a first child; none when the child is missing.
std::optional<std::string> text(
    const GDataXMLElement& element, std::string_view name, std::string_view uri);

} // namespace Tessel::Multistatus
