#include "Tessel/CaldavLibrary/Parsers/MRVAccountDetailsParser.h"

#include "Tessel/CaldavLibrary/Extensions/XMLNamespace.h"
#include "Tessel/CaldavLibrary/Parsers/Multistatus.h"

namespace Tessel {

namespace {

using Parser = MRVAccountDetailsParser;

struct URLProperty {
    const char* key;
    const char* name;
    const char* uri;
};

constexpr URLProperty urlProperties[] = {
    {Parser::principalURLKey, "current-user-principal", XMLNamespace::dav},
    {Parser::calendarHomeURLKey, "calendar-home-set", XMLNamespace::caldav},
    {Parser::scheduleInboxURLKey, "schedule-inbox-URL", XMLNamespace::caldav},
    {Parser::scheduleOutboxURLKey, "schedule-outbox-URL", XMLNamespace::caldav},
    {Parser::scheduleDefaultURLKey, "schedule-default-calendar-URL", XMLNamespace::caldav},
    {Parser::notificationURLKey, "notification-URL", XMLNamespace::calendarServer},
};

std::vector<std::string> hrefs(const GDataXMLElement& element)
{
    std::vector<std::string> texts;
    for (const auto& href : element.elementsForLocalName("href", XMLNamespace::dav)) {
        if (auto text = href.stringValue()) texts.push_back(std::move(*text));
    }
    return texts;
}

void read(const GDataXMLElement& prop, Parser::Details& details)
{
    for (const auto& [key, name, uri] : urlProperties) {
        const auto property = prop.first(name, uri);
        if (!property) continue;
        if (auto href = Multistatus::href(*property)) details[key] = std::move(*href);
    }
    if (const auto set = prop.first("calendar-user-address-set", XMLNamespace::caldav)) {
        details[Parser::calendarAddressSetKey] = hrefs(*set);
    }
}

} // namespace

std::optional<Parser::Details> MRVAccountDetailsParser::parseAccountDetails() const
{
    const auto root = rootElement();
    if (!root) return std::nullopt;

    Details details;
    Multistatus::forEachSuccessfulProp(
        root, [&](const auto&, const GDataXMLElement& prop) { read(prop, details); });
    return details;
}

} // namespace Tessel
