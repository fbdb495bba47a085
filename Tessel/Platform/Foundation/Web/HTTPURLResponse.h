#pragma once

#include "Tessel/Platform/Foundation/Web/HTTPHeaders.h"
#include "Tessel/Platform/Foundation/Web/URLResponse.h"

#include <string>

namespace Tessel {

/// Status and header fields of an HTTP answer.
class TESSEL_EXPORT HTTPURLResponse final : public URLResponse {
public:
    /// For a transport of one's own; `url` is where the answer came from.
    HTTPURLResponse(std::string url, int statusCode, HTTPHeaders headers);

    const int statusCode; ///< as sent
    const HTTPHeaders headers; ///< of the last answer, after redirects
};

} // namespace Tessel
