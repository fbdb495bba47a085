#include "Tessel/CaldavLibrary/MRVUtilities.h"

#include "Tessel/Platform/Foundation/Files/Bundle.h"
#include "Tessel/Platform/Foundation/Text/Base64.h"
#include "Tessel/icalendar/CGICalendar.h"

namespace Tessel {

namespace {

std::string_view lastPathComponent(std::string_view identifier)
{
    while (identifier.ends_with('/'))
        identifier.remove_suffix(1);
    return identifier.substr(identifier.rfind('/') + 1);
}

} // namespace

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
    const auto zones = Bundle::library().bundle("ZoneinfoBundle.bundle");
    const auto path = zones.pathForResource(lastPathComponent(zone.identifier()), "ics");
    if (!path) return {};
    const auto calendar = CGICalendar::initWithPath(*path);
    if (!calendar) return {};

    std::vector<std::shared_ptr<CGICalendarComponent>> definitions;
    for (const auto& object : calendar->objects) {
        const auto found = object->timezones();
        definitions.insert(definitions.end(), found.begin(), found.end());
    }
    return definitions;
}

} // namespace Tessel
