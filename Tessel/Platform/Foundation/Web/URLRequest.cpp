#include "Tessel/Platform/Foundation/Web/URLRequest.h"

#include "Tessel/Platform/Foundation/Base/FatalError.h"
#include "Tessel/Platform/Foundation/Web/URL.h"

namespace Tessel {

URLRequest::URLRequest(std::string_view url, const CallSite& site)
{
    auto encoded = encodedURL(url);
    if (!encoded) fatalError("not a valid URL: " + withoutUserInfo(url), site);
    url_ = std::move(*encoded);
}

} // namespace Tessel
