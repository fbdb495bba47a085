#pragma once

#include <string>
#include <string_view>

namespace Tessel {

/// Standard Base64 (RFC 4648, 4) without line breaks.
std::string base64Encoded(std::string_view bytes);

} // namespace Tessel
