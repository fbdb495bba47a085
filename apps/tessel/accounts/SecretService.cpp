#include "apps/tessel/accounts/SecretService.h"

#ifdef TESSEL_HAS_LIBSECRET
#include <libsecret/secret.h>
#endif

namespace Tessel::App {

#ifdef TESSEL_HAS_LIBSECRET

namespace {

const SecretSchema* schema()
{
    static const SecretSchema schema {"org.tessel.Account", SECRET_SCHEMA_NONE,
        {{"origin", SECRET_SCHEMA_ATTRIBUTE_STRING}, {"user", SECRET_SCHEMA_ATTRIBUTE_STRING},
            {nullptr, SECRET_SCHEMA_ATTRIBUTE_STRING}},
        0, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr};
    return &schema;
}

} // namespace

std::optional<std::string> SecretService::password(const Account& account)
{
    GError* error = nullptr;
    auto* const found = secret_password_lookup_sync(schema(), nullptr, &error, "origin",
        account.origin.c_str(), "user", account.user.c_str(), nullptr);
    g_clear_error(&error);
    if (!found) return std::nullopt;
    std::string password = found;
    secret_password_free(found);
    return password;
}

bool SecretService::keep(const Account& account, const std::string& password)
{
    GError* error = nullptr;
    const auto label = "Tessel: " + account.name();
    const bool isKept = secret_password_store_sync(schema(), SECRET_COLLECTION_DEFAULT,
                            label.c_str(), password.c_str(), nullptr, &error, "origin",
                            account.origin.c_str(), "user", account.user.c_str(), nullptr)
        == TRUE;
    g_clear_error(&error);
    return isKept;
}

bool SecretService::forget(const Account& account)
{
    GError* error = nullptr;
    // False without an error: there was none.
    secret_password_clear_sync(schema(), nullptr, &error, "origin", account.origin.c_str(), "user",
        account.user.c_str(), nullptr);
    const bool isDone = error == nullptr;
    g_clear_error(&error);
    return isDone;
}

#else

std::optional<std::string> SecretService::password(const Account&)
{
    return std::nullopt;
}

bool SecretService::keep(const Account&, const std::string&)
{
    return false;
}

bool SecretService::forget(const Account&)
{
    return false;
}

#endif

} // namespace Tessel::App
