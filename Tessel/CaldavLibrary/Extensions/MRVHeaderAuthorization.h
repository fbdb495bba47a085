#pragma once

namespace Tessel {

/// The name of the header field under which an auth delegate puts the credential.
inline constexpr const char* MRVHeaderAuthorization = "Authorization";

} // namespace Tessel
