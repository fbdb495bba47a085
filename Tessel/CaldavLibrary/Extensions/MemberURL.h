#pragma once

#include <string>
#include <string_view>

namespace Tessel {

/// The URL of a member of a collection (RFC 4918, 5.2): the collection's URL, a slash unless it
/// ends in one, and the name without any slash of its own.
std::string memberURL(std::string_view collectionURL, std::string_view name);

} // namespace Tessel
