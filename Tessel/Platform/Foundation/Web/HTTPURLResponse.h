#pragma once

#include "Tessel/Platform/Foundation/Web/HTTPHeaders.h"
#include "Tessel/Platform/Foundation/Web/URLResponse.h"

#include <string>

namespace Tessel {

/// Status and header fields of an HTTP answer.
class TESSEL_EXPORT HTTPURLResponse final : public URLResponse {
public:
    HTTPURLResponse(std::string url, int statusCode, HTTPHeaders headers);

    const int statusCode;
    const HTTPHeaders headers;
};

} // namespace Tessel
