#pragma once

#include "Tessel/CaldavLibrary/MRVAuthDelegate.h"
#include "Tessel/Platform/Foundation/Web/Origin.h"

#include <mutex>
#include <string>
#include <vector>

namespace Tessel {

/// Signs the requests to one server, and to further ones that the host allows, and no others:
/// wherever redirects and the server's hrefs lead, the credential stays with these origins (scheme,
/// host and port), and never goes over plain http unless such an origin was given.
///
/// Every other request is sent without an Authorization field, which its server answers as it
/// likes, mostly with 401. A server whose well-known address redirects to another host or port is
/// therefore found only if that one is given too.
class TESSEL_EXPORT OriginAuth : public MRVAuthDelegate {
public:
    ~OriginAuth() override;

    void authorize(const URLRequest& request, bool isGoogle,
        const std::shared_ptr<MRVAccount>& account,
        std::function<void(URLRequest)> completion) override;

protected:
    /// `credential` is the value of an Authorization field.
    OriginAuth(std::string credential, Origin origin, std::vector<Origin> others);

    /// For requests from now on; from any thread.
    void setCredential(std::string credential);

private:
    bool signs(const URLRequest& request) const;

    const std::vector<Origin> origins_;
    std::mutex mutex_;
    std::string credential_;
};

} // namespace Tessel
