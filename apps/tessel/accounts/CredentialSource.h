#pragma once

#include "apps/tessel/accounts/AccountList.h"

#include <Tessel/TesselSession.h>

#include <optional>
#include <string>

namespace Tessel::App {

/// Where a credential has come from.
struct FoundCredential {
    Credential credential;
    std::optional<std::string> typed = {}; ///< the password that the user was asked for
};

/// TESSEL_TOKEN, TESSEL_PASSWORD, what the desktop keeps for the account, or what the user types.
/// Throws a `Stop` of usage where there is none, or where it would not be sent: to a server without
/// TLS that is not allowed. An account that has no origin yet is new to the desktop.
FoundCredential findCredential(const Account& account);

} // namespace Tessel::App
