#pragma once

#include "Tessel/CaldavLibrary/Operation/MRVOperation.h"
#include "Tessel/Platform/Transport/MTaskDelegate.h"
#include "Tessel/Platform/Transport/MTaskRedirectionDelegate.h"

#include <memory>
#include <string>
#include <string_view>

namespace Tessel {

/// First step of discovery: asks the well-known address (RFC 6764, 5) for the principal and for
/// every collection that the server names there.
///
/// An account that has a principal URL already is not asked about: nothing is sent and the
/// operation never finishes. A redirect of the well-known address gives the account a new server
/// URL, "https" with the host and port of the target, and the request is repeated at the target.
class MRVGetPrincipalOperation final : public MRVOperation,
                                       public MTaskDelegate,
                                       public MTaskRedirectionDelegate {
public:
    explicit MRVGetPrincipalOperation(std::shared_ptr<MRVAccountInfoProvider> provider);

    void main() override;

    /// The server URL followed by ".well-known/caldav".
    std::string wellKnownURL() const;
    /// The account's server URL, with "https://" in front when it holds no "http" anywhere.
    std::string getServerURL() const;
    /// "https://" and the host, with its port if any, of a URL.
    static std::string getServerURL(std::string_view url);

    // Every result comes through the completion.
    void downloadCompleted(const std::optional<std::string>&, const Data&) override { }
    void taskDidReceiveError(const std::optional<std::string>&, int, const std::string&) override {
    }

    bool didRequestHTTPRedirection(
        const URLRequest& originalRequest, const URLRequest& newRequest) override;

private:
    void send(URLRequest request);
    void read(const Data& data);

    int redirectsTaken_ = 0;
};

} // namespace Tessel
