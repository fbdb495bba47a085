#pragma once

#include "Tessel/Platform/Foundation/Base/Export.h"

#if __cplusplus < 202002L
#error "Tessel needs C++20: compile with -std=c++20, or a later standard."
#endif

#include <string_view>

/// The version of these headers. Until 1.0 a new minor number may change what a host compiles or
/// links against; a new patch number changes neither.
#define TESSEL_VERSION_MAJOR 0
#define TESSEL_VERSION_MINOR 2
#define TESSEL_VERSION_PATCH 0

namespace Tessel {

/// The version of the library that is linked, such as "0.2.0". From any thread.
TESSEL_EXPORT std::string_view libraryVersion();

} // namespace Tessel
