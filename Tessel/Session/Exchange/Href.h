#pragma once

#include "Tessel/Platform/Foundation/Web/Origin.h"

#include <string>
#include <string_view>
#include <vector>

namespace Tessel {

/// The absolute URL of what a server names in an answer that came from `base`: an absolute URL, a
/// path, or a name beside it (RFC 3986, 5.2; RFC 4918, 8.3). Dots within a path stay as they are.
std::string resolved(std::string_view base, std::string_view href);

/// "https://host:port" as people write it: without the port that the scheme implies.
std::string baseOf(const Origin& origin);

/// How sessions name a resource and stores hold it: the path on the account's server, as the server
/// spells it; the absolute URL of one that lies elsewhere.
std::string placeOf(const Origin& account, std::string_view url);

/// The path of a URL with its query, in the one spelling in which resources are compared: only
/// characters that would mean something else are percent-encoded (RFC 3986, 6.2.2).
std::string normalPath(std::string_view url);

/// The names under which a store may hold the resource of a calendar at the place: as it is given,
/// then in the spellings of most servers and of what a session creates.
std::vector<std::string> spellingsOf(const std::string& calendar, const std::string& place);

/// `text` as one segment of a path.
std::string encodedSegment(std::string_view text);

} // namespace Tessel
