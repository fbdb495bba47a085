#pragma once

#include "Tessel/Platform/Foundation/Base/Export.h"
#include "Tessel/Platform/Foundation/Web/URLRequest.h"

namespace Tessel {

/// A task delegate that wants to hear of redirects before the transport follows them.
class TESSEL_EXPORT MTaskRedirectionDelegate {
public:
    virtual ~MTaskRedirectionDelegate();

    /// `newRequest` is `originalRequest` with the absolute URL of the redirect. True when the
    /// delegate has taken over: the exchange is then over and its completion handler is never
    /// called. False leaves the redirect to the transport.
    virtual bool didRequestHTTPRedirection(
        const URLRequest& originalRequest, const URLRequest& newRequest)
        = 0;
};

} // namespace Tessel
