#pragma once

#include "Tessel/Platform/Foundation/Base/Data.h"
#include "Tessel/Platform/Foundation/Web/HTTPHeaders.h"

#include <string>

namespace Tessel {

/// A server's answer to one request, whatever its status.
struct Answer {
    std::string method; ///< of the request
    std::string url; ///< where the answer came from, after redirects
    int status = 0;
    HTTPHeaders headers = {};
    Data body = {};

    /// A status from 200 to 299. A 207 tells of each resource or property on its own: look into it.
    bool isSuccess() const { return status >= 200 && status < 300; }
};

} // namespace Tessel
