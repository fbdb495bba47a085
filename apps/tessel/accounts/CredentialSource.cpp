#include "apps/tessel/accounts/CredentialSource.h"

#include "apps/tessel/accounts/PasswordPrompt.h"
#include "apps/tessel/accounts/SecretService.h"
#include "apps/tessel/accounts/Stop.h"
#include "apps/tessel/output/Environment.h"

namespace Tessel::App {

FoundCredential findCredential(const Account& account)
{
    if (const auto token = environmentValue("TESSEL_TOKEN")) return {Token {*token}};
    if (const auto password = environmentValue("TESSEL_PASSWORD")) return {Password {*password}};
    if (!account.origin.empty()) {
        if (auto kept = SecretService::password(account)) return {Password {std::move(*kept)}};
    }
    auto typed = askForPassword("Password of " + account.user + " at " + account.server + ": ");
    if (!typed)
        throw Stop::usage("There is no password for " + account.user + " at " + account.server
            + ", and no terminal to ask on. Set TESSEL_PASSWORD or TESSEL_TOKEN.");
    return {Password {*typed}, typed};
}

} // namespace Tessel::App
