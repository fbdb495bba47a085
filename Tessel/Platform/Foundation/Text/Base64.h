#pragma once

#include "Tessel/Platform/Foundation/Base/Export.h"

#include <string>
#include <string_view>

namespace Tessel {

/// Standard Base64 (RFC 4648, 4) without line breaks.
TESSEL_EXPORT std::string base64Encoded(std::string_view bytes);

} // namespace Tessel
