#include "Tessel/Platform/Foundation/Web/URLResponse.h"

namespace Tessel {

URLResponse::URLResponse(std::string url)
    : url(std::move(url))
{
}

URLResponse::~URLResponse() = default;

} // namespace Tessel
