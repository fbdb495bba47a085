#pragma once

#include "Tessel/CaldavLibrary/MRVAuthDelegate.h"

#include <memory>
#include <string>
#include <variant>

namespace Tessel {

/// The user's password (RFC 7617).
struct Password {
    std::string text; ///< UTF-8
};

/// A bearer token (RFC 6750).
struct Token {
    std::string text; ///< without "Bearer "
};

/// What a session proves with who the user is: a password or a token, which it sends to the
/// account's own server only, or a delegate that signs requests itself, such as a `BearerAuth`
/// whose token the host renews. A session sends no request elsewhere in any case, and holds the
/// delegate.
using Credential = std::variant<Password, Token, std::shared_ptr<MRVAuthDelegate>>;

} // namespace Tessel
