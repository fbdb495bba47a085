#pragma once

#include "Tessel/Platform/Foundation/Base/Data.h"
#include "Tessel/Platform/Foundation/Base/Export.h"
#include "Tessel/Platform/Foundation/Web/URLRequest.h"

#include <optional>
#include <string>

namespace Tessel {

/// Told by the transport how the exchange it was given for ended, in addition to the completion
/// handler. Calls arrive on the transport's callback thread.
class TESSEL_EXPORT MTaskDelegate {
public:
    virtual ~MTaskDelegate();

    virtual void downloadCompleted(const std::optional<std::string>& identifier, const Data& data)
        = 0;
    virtual void taskDidReceiveError(
        const std::optional<std::string>& identifier, int errorCode, const std::string& message)
        = 0;
};

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
