#include "Tessel/Platform/Foundation/Base/Version.h"

#define TESSEL_TEXT_OF(number) #number
#define TESSEL_JOINED(major, minor, patch)                                                         \
    TESSEL_TEXT_OF(major) "." TESSEL_TEXT_OF(minor) "." TESSEL_TEXT_OF(patch)

namespace Tessel {

std::string_view libraryVersion()
{
    return TESSEL_JOINED(TESSEL_VERSION_MAJOR, TESSEL_VERSION_MINOR, TESSEL_VERSION_PATCH);
}

} // namespace Tessel
