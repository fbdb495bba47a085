#pragma once

#include "Tessel/CaldavLibrary/Models/MRVAccount.h"
#include "Tessel/Platform/Foundation/Base/Export.h"
#include "Tessel/Platform/Foundation/Web/URLRequest.h"

#include <functional>
#include <memory>

namespace Tessel {

/// Gives requests their credentials. The host implements it.
class TESSEL_EXPORT MRVAuthDelegate {
public:
    virtual ~MRVAuthDelegate();

    /// Called before every request, on a worker thread or the transport's callback thread. Must
    /// call `completion` exactly once, from any thread, with the request to send: normally the same
    /// one with the field `MRVHeaderAuthorization` added (`MRVUtilities` builds its value). The
    /// exchange waits for it; without the call it never starts. `isGoogle` tells that the account's
    /// type is `google`. Discovery asks for whatever host the well-known address redirects to: look
    /// at the request's host before trusting it with a credential.
    virtual void authorize(const URLRequest& request, bool isGoogle,
        const std::shared_ptr<MRVAccount>& account, std::function<void(URLRequest)> completion)
        = 0;
};

} // namespace Tessel
