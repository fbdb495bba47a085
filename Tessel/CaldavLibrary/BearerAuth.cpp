#include "Tessel/CaldavLibrary/BearerAuth.h"

#include "Tessel/CaldavLibrary/MRVUtilities.h"

namespace Tessel {

BearerAuth::BearerAuth(Origin origin, std::string_view token, std::vector<Origin> others)
    : OriginAuth(MRVUtilities::bearerTokenAuthString(token), std::move(origin), std::move(others))
{
}

BearerAuth::~BearerAuth() = default;

void BearerAuth::setToken(std::string_view token)
{
    setCredential(MRVUtilities::bearerTokenAuthString(token));
}

} // namespace Tessel
