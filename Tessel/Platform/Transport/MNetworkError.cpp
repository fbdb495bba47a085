#include "Tessel/Platform/Transport/MNetworkError.h"

namespace Tessel {

Error makeNetworkError(MNetworkErrorCode code, std::string description)
{
    return Error {.domain = MNetworkErrorDomain,
        .code = static_cast<int>(code),
        .localizedDescription = std::move(description)};
}

} // namespace Tessel
