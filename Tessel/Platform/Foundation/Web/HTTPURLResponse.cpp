#include "Tessel/Platform/Foundation/Web/HTTPURLResponse.h"

namespace Tessel {

HTTPURLResponse::HTTPURLResponse(std::string url, int statusCode, HTTPHeaders headers)
    : URLResponse(std::move(url))
    , statusCode(statusCode)
    , headers(std::move(headers))
{
}

} // namespace Tessel
