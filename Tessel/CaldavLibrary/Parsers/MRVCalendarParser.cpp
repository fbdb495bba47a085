#include "Tessel/CaldavLibrary/Parsers/MRVCalendarParser.h"

#include "Tessel/CaldavLibrary/Extensions/Mailto.h"
#include "Tessel/CaldavLibrary/Extensions/XMLNamespace.h"
#include "Tessel/CaldavLibrary/Parsers/MRVTimeZoneParser.h"
#include "Tessel/CaldavLibrary/Parsers/Multistatus.h"
#include "Tessel/Platform/Foundation/Base/FatalError.h"
#include "Tessel/Platform/Plinth/Logger.h"

namespace Tessel {

namespace {

constexpr auto D = XMLNamespace::dav;
constexpr auto C = XMLNamespace::caldav;
constexpr auto CS = XMLNamespace::calendarServer;
constexpr auto I = XMLNamespace::appleICal;

std::string requiredText(const GDataXMLElement& element)
{
    auto text = element.stringValue();
    if (!text) fatalError("no text in the required element " + std::string(element.name()));
    return std::move(*text);
}

TimeZone timeZone(std::string text)
{
    const auto zones = MRVTimeZoneParser(std::move(text)).parseTimeZones();
    if (!zones || zones->empty()) fatalError("no zone can be read from a calendar-timezone");
    return zones->begin()->second;
}

MRVCalendarComponents components(const std::vector<GDataXMLElement>& comps)
{
    auto set = MRVCalendarComponents::none;
    for (const auto& comp : comps) {
        const auto name = comp.attribute("name");
        if (!name) fatalError("a supported calendar component has no name");
        if (*name == "VEVENT") set.insert(MRVCalendarComponents::event);
        if (*name == "VTODO") set.insert(MRVCalendarComponents::todo);
    }
    return set;
}

MRVCalendarPrivileges privileges(const std::vector<GDataXMLElement>& elements)
{
    struct Privilege {
        const char* name;
        const char* uri;
        int bit;
    };
    constexpr Privilege known[] = {
        {"all", D, 1},
        {"read", D, 2},
        {"read-current-user-privilege-set", D, 16},
        {"write", D, 4},
        {"write-content", D, 128},
        {"write-properties", D, 64},
        {"read-free-busy", C, 256},
    };
    MRVCalendarPrivileges set;
    for (const auto& element : elements) {
        for (const auto& [name, uri, bit] : known) {
            if (element.first(name, uri)) set.insert(MRVCalendarPrivileges(bit));
        }
    }
    return set;
}

MRVCalendarSharingMode sharingModes(const GDataXMLElement& element)
{
    MRVCalendarSharingMode set;
    if (element.first("can-be-shared", CS)) set.insert(MRVCalendarSharingMode(1));
    if (element.first("can-be-published", CS)) set.insert(MRVCalendarSharingMode(2));
    if (element.first("never-publish", CS)) set.insert(MRVCalendarSharingMode(8));
    if (element.first("never-shared", CS)) set.insert(MRVCalendarSharingMode(4));
    return set;
}

MRVInviteStatus inviteStatus(const GDataXMLElement& user)
{
    if (user.first("invite-accepted", CS)) return MRVInviteStatus::accepted;
    if (user.first("invite-declined", CS)) return MRVInviteStatus::declined;
    if (user.first("invite-deleted", CS)) return MRVInviteStatus::deleted;
    return MRVInviteStatus::noResponse;
}

std::vector<std::shared_ptr<MRVSharee>> sharees(const GDataXMLElement& invite)
{
    std::vector<std::shared_ptr<MRVSharee>> list;
    for (const auto& user : invite.elementsForLocalName("user", CS)) {
        const auto access = user.first("access", CS);
        const auto href = Multistatus::href(user);
        if (!href) fatalError("a sharee has no address");
        list.push_back(std::make_shared<MRVSharee>(MRVSharee {.email = withoutMailto(*href),
            .access = access && access->first("read-write", CS) ? MRVSharedCalendarAccess::readWrite
                                                                : MRVSharedCalendarAccess::readOnly,
            .status = inviteStatus(user)}));
    }
    return list;
}

std::optional<std::string> organizerName(const GDataXMLElement& organizer)
{
    if (const auto commonName = organizer.first("organizer-cn", CS))
        return commonName->stringValue();
    const auto firstName = organizer.first("organizer-first", CS);
    const auto lastName = organizer.first("organizer-last", CS);
    if (!firstName || !lastName) return std::nullopt;
    return firstName->stringValue().value_or("") + " " + lastName->stringValue().value_or("");
}

void fillOptional(MRVCalendar& calendar, const GDataXMLElement& prop)
{
    calendar.color = Multistatus::text(prop, "calendar-color", I);
    calendar.order = Multistatus::text(prop, "calendar-order", I);
    calendar.prePublishURL = Multistatus::text(prop, "pre-publish-url", CS);
    if (const auto modes = prop.first("allowed-sharing-modes", CS)) {
        calendar.sharingModes = sharingModes(*modes);
    }
    if (const auto invite = prop.first("invite", CS)) {
        calendar.sharees = sharees(*invite);
        if (const auto organizer = invite->first("organizer", CS)) {
            calendar.organizerName = organizerName(*organizer);
            calendar.organizerEmail = Multistatus::href(*organizer);
        }
    }
}

} // namespace

std::optional<std::vector<std::shared_ptr<MRVCalendar>>> MRVCalendarParser::parseCalendars() const
{
    const auto root = rootElement();
    if (!Multistatus::hasResponse(root)) return std::nullopt;

    std::vector<std::shared_ptr<MRVCalendar>> calendars;
    Multistatus::forEachPropstat(root, [&](const auto& href, const GDataXMLElement& propstat) {
        for (const auto& prop : propstat.elementsForLocalName("prop", D)) {
            if (auto found = calendar(href, prop)) calendars.push_back(std::move(found));
        }
    });
    return calendars;
}

std::shared_ptr<MRVCalendar> MRVCalendarParser::calendar(
    const std::optional<GDataXMLElement>& hrefElement, const GDataXMLElement& prop) const
{
    const auto logger = Plinth::logger();
    logger->log(Plinth::Level::debug, "prop: ", [&] { return prop.stringValue(); });
    logger->log(Plinth::Level::debug, "item no");

    const auto resourceType = prop.first("resourcetype", D);
    if (!resourceType) {
        logger->log(Plinth::Level::debug, "no resourceType");
        return nullptr;
    }
    if (!resourceType->first("calendar", C)) {
        logger->log(Plinth::Level::debug, "no calendarElement");
        return nullptr;
    }
    const auto href = hrefElement ? hrefElement->stringValue() : std::nullopt;
    if (!href) return nullptr;
    if (!account()) fatalError("calendars are parsed without an account");

    const auto displayName = prop.first("displayname", D);
    const auto cTag = prop.first("getctag", CS);
    const auto syncToken = prop.first("sync-token", D);
    const auto componentSet = prop.first("supported-calendar-component-set", C);
    const auto privilegeSet = prop.first("current-user-privilege-set", D);
    const auto owner = prop.first("owner", D);
    const auto ownerHref = owner ? owner->first("href", D) : std::nullopt;
    const auto zone = prop.first("calendar-timezone", C);
    if (!displayName || !cTag || !syncToken || !componentSet || !privilegeSet || !ownerHref
        || !zone) {
        return nullptr;
    }

    const auto transparency = prop.first("schedule-calendar-transp", C);
    auto calendar = std::make_shared<MRVCalendar>(MRVCalendar {
        .calID = account()->identifier + *href,
        .href = *href,
        .displayName = requiredText(*displayName),
        .cTag = requiredText(*cTag),
        .desc = Multistatus::text(prop, "calendar-description", C),
        .syncToken = requiredText(*syncToken),
        .owner = requiredText(*ownerHref),
        .timeZone = timeZone(requiredText(*zone)),
        .account = account(),
        .supportedComponents = components(componentSet->elementsForLocalName("comp", C)),
        .privileges = privileges(privilegeSet->elementsForLocalName("privilege", D)),
        .includeInBusyTime = transparency && transparency->first("opaque", C),
        .isShared = resourceType->first("shared", CS) || resourceType->first("shared-owner", CS),
    });
    fillOptional(*calendar, prop);
    return calendar;
}

} // namespace Tessel
