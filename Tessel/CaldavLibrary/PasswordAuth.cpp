#include "Tessel/CaldavLibrary/PasswordAuth.h"

#include "Tessel/CaldavLibrary/MRVUtilities.h"

namespace Tessel {

PasswordAuth::PasswordAuth(
    Origin origin, std::string_view user, std::string_view password, std::vector<Origin> others)
    : OriginAuth(
        MRVUtilities::basicAuthString(user, password), std::move(origin), std::move(others))
{
}

PasswordAuth::~PasswordAuth() = default;

} // namespace Tessel
