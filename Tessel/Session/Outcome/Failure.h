#pragma once

#include "Tessel/Platform/Foundation/Base/Export.h"

#include <chrono>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace Tessel {

enum class FailureKind {
    unreachable, ///< no connection: the name is not known, nobody listens, the network is down
    untrusted, ///< the server's certificate is not trusted
    timedOut, ///< no progress, or the overall limit was reached
    cancelled, ///< by the host
    unauthorized, ///< 401: the server does not accept the credential
    forbidden, ///< 403 and its like: the user may not do this
    missing, ///< 404 and 410: there is no such resource
    changed, ///< 412: somebody else has written meanwhile
    conflict, ///< 409, 423: the resource's state does not allow it
    tooLarge, ///< 413, 507: the server takes no more
    busy, ///< 429 and 503: try again, at `Failure::retryAfter` where the server says when
    refused, ///< any other answer that is no success
    serverFault, ///< 500 and its like: the server has failed
    malformed, ///< what came, or what was given, cannot be read
    unsupported, ///< the server does not offer this; nothing was sent
    /// Nothing was sent: no credential, or one that may not go to this place; or it was sent
    /// without one and answered 401.
    notSent,
    storage, ///< the host's store cannot be read or written
};

/// The name of a kind as it is written in code, such as "timedOut".
TESSEL_EXPORT std::string_view nameOf(FailureKind kind);

/// Both sides of a change that met another one.
struct BothTexts {
    std::string mine; ///< the iCalendar text that was to be written; empty for a removal
    std::string theirs; ///< what the server holds; empty when it was removed there
};

/// Why a call did not do what it was asked for.
struct TESSEL_EXPORT Failure {
    FailureKind kind = FailureKind::refused; ///< to decide by
    std::string reason; ///< for a person: what was tried, what came back, what to do
    std::string method = {}; ///< of the request that failed; empty when there was none
    std::string url = {}; ///< likewise, after redirects
    int status = 0; ///< as the server sent it; 0 without an answer
    bool isUncertain = false; ///< the server may have done it all the same
    std::string condition
        = {}; ///< of the answer's DAV:error (RFC 4918, 16), such as "need-privileges"
    std::string serverWords = {}; ///< the text of the answer's body, at most 1,000 characters
    std::optional<std::chrono::seconds> retryAfter = {}; ///< from when the answer came
    std::shared_ptr<const BothTexts> texts = {}; ///< with `changed`, where both are known
};

} // namespace Tessel
