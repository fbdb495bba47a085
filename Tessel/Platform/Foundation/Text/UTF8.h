#pragma once

#include "Tessel/Platform/Foundation/Base/Export.h"

#include <cstddef>
#include <string_view>

namespace Tessel {

/// Whether the bytes are well-formed UTF-8 (RFC 3629: no overlong forms, no surrogates).
TESSEL_EXPORT bool isValidUTF8(std::string_view bytes);

/// The number of Unicode code points in UTF-8 text.
TESSEL_EXPORT std::size_t codePointCount(std::string_view text);

} // namespace Tessel
