#pragma once

#include "Tessel/Platform/Foundation/Base/Export.h"

namespace Tessel {

/// For hosts that make the library's types by name; it has no members.
class TESSEL_EXPORT MRVClientFactory { };

} // namespace Tessel
