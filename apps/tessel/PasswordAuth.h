#pragma once

#include <Tessel/Tessel.h>

#include <string>
#include <utility>

namespace Tessel::App {

/// Signs every request with the user's name and password.
class PasswordAuth final : public MRVAuthDelegate {
public:
    PasswordAuth(const std::string& user, const std::string& password)
        : credential_(MRVUtilities::basicAuthString(user, password))
    {
    }

    void authorize(const URLRequest& request, bool, const std::shared_ptr<MRVAccount>&,
        std::function<void(URLRequest)> completion) override
    {
        auto authorized = request;
        authorized.headers.set(MRVHeaderAuthorization, credential_);
        completion(std::move(authorized));
    }

private:
    const std::string credential_;
};

} // namespace Tessel::App
