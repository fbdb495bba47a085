#pragma once

#include "Tessel/Platform/Foundation/Base/Data.h"
#include "Tessel/Platform/Foundation/Web/HTTPHeaders.h"
#include "Tessel/Session/Outcome/Failure.h"

#include <string>
#include <string_view>

namespace Tessel {

/// A server's answer to one request, whatever its status.
struct Answer {
    std::string method; ///< of the request
    std::string url; ///< where the answer came from, after redirects
    int status = 0; ///< as the server sent it
    HTTPHeaders headers = {}; ///< of the answer
    Data body = {}; ///< decompressed
    /// Whether the auth delegate put a credential, or any field, on the request.
    bool wasSigned = true;

    /// A status from 200 to 299. A 207 tells of each resource or property on its own: look into it.
    bool isSuccess() const { return status >= 200 && status < 300; }
};

/// What an answer that is no success means: kind, the server's own words, and what to do. `what`
/// says what could not be done, such as "The calendar could not be created".
TESSEL_EXPORT Failure failureOf(const Answer& answer, std::string_view what);

} // namespace Tessel
