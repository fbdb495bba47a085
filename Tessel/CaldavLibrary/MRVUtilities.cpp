#include "Tessel/CaldavLibrary/MRVUtilities.h"

#include "Tessel/CaldavLibrary/Extensions/ZoneDefinitions.h"
#include "Tessel/Platform/Foundation/Text/Base64.h"

namespace Tessel {

std::string MRVUtilities::basicAuthString(std::string_view user, std::string_view password)
{
    return "Basic " + base64Encoded(std::string(user) + ":" + std::string(password));
}

std::string MRVUtilities::bearerTokenAuthString(std::string_view token)
{
    return "Bearer " + std::string(token);
}

std::vector<std::shared_ptr<CGICalendarComponent>> MRVUtilities::vTimeZone(const TimeZone& zone)
{
    return bundledDefinitions(zone);
}

} // namespace Tessel
