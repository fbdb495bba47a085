#pragma once

#include "Tessel/CaldavLibrary/MRVAccountInfoProvider.h"
#include "Tessel/CaldavLibrary/MRVClient.h"
#include "Tessel/CaldavLibrary/Operation/MOperation.h"
#include "Tessel/CaldavLibrary/Operation/MRVStatusCode.h"
#include "Tessel/Platform/Foundation/Base/Data.h"
#include "Tessel/Platform/Foundation/Base/Error.h"
#include "Tessel/Platform/Foundation/Base/Export.h"
#include "Tessel/Platform/Foundation/Web/URLRequest.h"
#include "Tessel/Platform/Foundation/Web/URLResponse.h"
#include "Tessel/Platform/Transport/MTaskDelegate.h"
#include "Tessel/Platform/XML/GDataXMLElement.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace Tessel {

class MNetworkManager;

/// Base of the operations that talk to a server: one authorised HTTP exchange. The creator sets one
/// of the two sources of account and credentials before queueing the operation; having neither is a
/// programming error that stops the process.
class TESSEL_EXPORT MRVOperation : public MOperation {
public:
    std::shared_ptr<MRVClient> client; ///< whose account and credentials are used
    std::shared_ptr<MRVAccountInfoProvider>
        accountInfoProvider; ///< instead of `client`, in discovery

    /// A path that begins with "http" as it is; any other directly behind the account's server URL
    /// less one final slash.
    std::string absoluteURL(std::string_view path) const;

    /// Declares the prefixes cs, d, ical and c on the root of a request body.
    static void addXMLNamespaces(GDataXMLElement& element);

    /// The answer's body; the transport's error, if any; the mapped status, absent when there was
    /// an error or no HTTP answer.
    using ProcessCompletion = std::function<void(
        const Data& data, const std::optional<Error>& error, std::optional<MRVStatusCode> status)>;

    /// Sets `User-Agent` on `request`, has it authorised and sends it; `completion` is called on
    /// the transport's callback thread, and the operation finishes once it has returned. It is
    /// never called when the auth delegate does not answer.
    ///
    /// Stops the process when the auth delegate is gone, when there is no response at all without
    /// an error, and when the body is not UTF-8.
    void process(URLRequest& request, std::string message,
        const std::shared_ptr<MTaskDelegate>& delegate, ProcessCompletion completion);

protected:
    std::shared_ptr<MRVAccount> account() const; ///< of the client or the provider
    /// Stops the process when the client's auth delegate is gone.
    std::shared_ptr<MRVAuthDelegate> authDelegate() const;

    /// The answer's body, its response (null without one), the transport's error if any.
    using SendCompletion = std::function<void(const Data& data,
        const std::shared_ptr<const URLResponse>& response, const std::optional<Error>& error)>;

    /// Told which transport has sent a task, and the number that would cancel it there.
    using TaskSent = std::function<void(const std::shared_ptr<MNetworkManager>&, int number)>;

    /// Has the request authorised and sends it as it then is. `mayFollow` as in `MTask`.
    void authorizeAndSend(const URLRequest& request, MRVAuthDelegate& authDelegate,
        const std::shared_ptr<MTaskDelegate>& delegate, SendCompletion completion,
        std::function<bool(const URLRequest&)> mayFollow = {}, TaskSent sent = {}) const;

private:
    struct Sending;
};

/// What completion closures capture of their operation: they do nothing once it is gone.
template <class SomeOperation> std::weak_ptr<SomeOperation> weakly(SomeOperation* operation)
{
    return std::static_pointer_cast<SomeOperation>(operation->shared_from_this());
}

} // namespace Tessel
