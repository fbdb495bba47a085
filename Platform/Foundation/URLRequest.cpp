#include "Platform/Foundation/URLRequest.h"

#include "Platform/Foundation/FatalError.h"
#include "Platform/Foundation/URL.h"

namespace Tessel {

URLRequest::URLRequest(std::string_view url, const CallSite& site)
{
    auto encoded = encodedURL(url);
    if (!encoded) fatalError("not a valid URL: " + withoutUserInfo(url), site);
    url_ = std::move(*encoded);
}

} // namespace Tessel
