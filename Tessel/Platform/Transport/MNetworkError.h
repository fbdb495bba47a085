#pragma once

#include "Tessel/Platform/Foundation/Base/Error.h"
#include "Tessel/Platform/Foundation/Base/Export.h"

#include <string>

namespace Tessel {

/// The `domain` of the errors that `MCurlNetworkManager` reports.
inline constexpr const char* MNetworkErrorDomain = "Tessel.MNetworkManager";

/// The `code` of an error of `MNetworkErrorDomain`.
enum class MNetworkErrorCode {
    other = 1,
    invalidRequest, ///< a method, header field or URL that cannot go on the wire
    cannotConnect, ///< no such host, or nobody listens there
    untrusted, ///< TLS failed: certificate, host name, version or the files of the configuration
    timedOut, ///< no progress within the request's `timeoutInterval`
    connectionLost, ///< reset, half-closed or cut before the answer was complete; whether the
                    ///< server has carried the request out is not known
    malformedAnswer, ///< what arrived is not HTTP, or its encoding is broken
    answerTooLarge, ///< more than `maximumAnswerSize`, too many header lines, or compressed
                    ///< beyond all honest use
    tooManyRedirects, ///< more than ten in a row
    unsafeRedirect, ///< from https to http, or to something that is no HTTP address
    cancelled, ///< by `MNetworkManager::cancel`; the server may carry it out all the same
};

/// An error of `MNetworkErrorDomain`.
TESSEL_EXPORT Error makeNetworkError(MNetworkErrorCode code, std::string description);

} // namespace Tessel
