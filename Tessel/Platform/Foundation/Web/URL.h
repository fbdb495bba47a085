#pragma once

#include "Tessel/Platform/Foundation/Base/Export.h"

#include <optional>
#include <string>
#include <string_view>

namespace Tessel {

/// The text with everything that a URL cannot hold (controls, blanks, quotes, non-ASCII) as
/// percent-encoded UTF-8 (RFC 3986, 2.1); what is encoded already stays as it is. None when the
/// result is no URL: an empty text, a scheme or port that is none, or a malformed host. A relative
/// reference counts as a URL.
TESSEL_EXPORT std::optional<std::string> encodedURL(std::string_view text);

/// The URL without user name and password, fit for a log.
TESSEL_EXPORT std::string withoutUserInfo(std::string_view url);

} // namespace Tessel
