#pragma once

#include "Tessel/CaldavLibrary/Models/MRVAccount.h"
#include "Tessel/Platform/Foundation/Base/Export.h"
#include "Tessel/Platform/Foundation/Web/URLRequest.h"

#include <functional>
#include <memory>

namespace Tessel {

/// Gives requests their credentials. `PasswordAuth` and `BearerAuth` are ready; a host that
/// implements its own decides for each request whether its URL may see the credential.
class TESSEL_EXPORT MRVAuthDelegate {
public:
    virtual ~MRVAuthDelegate();

    /// Called before every request, on a worker thread or the transport's callback thread. Must
    /// call `completion` exactly once, from any thread, with the request to send: normally the same
    /// one with the field `MRVHeaderAuthorization` added (`MRVUtilities` builds its value). The
    /// exchange waits for it; without the call it never starts. `isGoogle` tells that the account's
    /// type is `google`.
    ///
    /// Redirects and the hrefs of answers lead to whatever host the server likes, and over plain
    /// http too; `account->serverURL` may have been written by a redirect already. So compare
    /// `Origin::of(request.url())` with an origin that you kept yourself, and hand other requests
    /// to `completion` without a credential.
    virtual void authorize(const URLRequest& request, bool isGoogle,
        const std::shared_ptr<MRVAccount>& account, std::function<void(URLRequest)> completion)
        = 0;
};

} // namespace Tessel
