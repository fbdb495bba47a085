#pragma once

#include "Tessel/Platform/Foundation/Base/Export.h"

#include <string>

namespace Tessel {

/// A new random UUID (RFC 4122, version 4) in upper-case hexadecimal, 8-4-4-4-12 with hyphens.
TESSEL_EXPORT std::string makeUUID();

} // namespace Tessel
