#pragma once

#include "Tessel/CaldavLibrary/MRVAuthDelegate.h"
#include "Tessel/CaldavLibrary/Models/MRVAccount.h"
#include "Tessel/Platform/Foundation/Base/Export.h"

#include <functional>
#include <memory>

namespace Tessel {

/// Finds an account's locations on the server before any client exists. Made with
/// `std::make_shared`; holds account and auth delegate strongly.
class TESSEL_EXPORT MRVAccountInfoProvider final
    : public std::enable_shared_from_this<MRVAccountInfoProvider> {
public:
    /// Holds both; neither may be null.
    MRVAccountInfoProvider(
        std::shared_ptr<MRVAccount> account, std::shared_ptr<MRVAuthDelegate> authDelegate);

    /// The account that discovery fills in.
    const std::shared_ptr<MRVAccount>& account() const { return account_; }
    /// As given.
    const std::shared_ptr<MRVAuthDelegate>& authDelegate() const { return authDelegate_; }

    /// Runs discovery (RFC 6764, 6): the well-known address for the principal, the principal for
    /// the collections, the calendar home for the supported methods. Each answer is written into
    /// the account as it arrives.
    ///
    /// `completion` gets this provider's own account, on a worker thread, once the last step has
    /// ended, whether or not the server named its methods. It is NEVER called when no principal
    /// is found, when the account has a principal URL already, and when the principal's answer
    /// already carried the calendar home: give discovery a deadline. When the principal was found
    /// but its own answer brings no calendar home, also because the connection was lost, the last
    /// step STOPS THE PROCESS. A server address without a scheme works only where the well-known
    /// address redirects. See docs/behaviour.md for all of this.
    void getAccountInfo(std::function<void(std::shared_ptr<MRVAccount>)> completion);

private:
    const std::shared_ptr<MRVAccount> account_;
    const std::shared_ptr<MRVAuthDelegate> authDelegate_;
};

} // namespace Tessel
