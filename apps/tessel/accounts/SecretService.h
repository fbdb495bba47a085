#pragma once

#include "apps/tessel/accounts/AccountList.h"

#include <optional>
#include <string>

namespace Tessel::App {

/// The desktop's keeper of passwords, by the Secret Service on the session bus. Where none answers,
/// or the tool was built without libsecret, there is nothing in it and nothing is kept.
class SecretService {
public:
    SecretService() = delete;

    static std::optional<std::string> password(const Account& account);
    static bool keep(const Account& account, const std::string& password);
    static bool forget(
        const Account& account); ///< whether nothing of the account is kept by it now
};

} // namespace Tessel::App
