#include "apps/tessel/accounts/CredentialSource.h"

#include "apps/tessel/accounts/PasswordPrompt.h"
#include "apps/tessel/accounts/SecretService.h"
#include "apps/tessel/accounts/Stop.h"
#include "apps/tessel/output/Environment.h"

namespace Tessel::App {

FoundCredential findCredential(const Account& account)
{
    const auto origin = Origin::ofServer(account.server);
    if (origin && origin->text().starts_with("http:") && !account.isInsecure)
        throw Stop({.kind = FailureKind::notSent,
            .reason = account.server
                + " is a server without TLS, on the way to which everybody could read the "
                  "password. Give https, or --insecure to allow it."});
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
