#include "Tessel/CaldavLibrary/Parsers/MRVNotificationInfoParser.h"

#include "Tessel/CaldavLibrary/Extensions/XMLNamespace.h"
#include "Tessel/CaldavLibrary/Parsers/Multistatus.h"

namespace Tessel {

namespace {

constexpr auto D = XMLNamespace::dav;
constexpr auto CS = XMLNamespace::calendarServer;

bool isPlainResource(const GDataXMLElement& prop)
{
    const auto resourceType = prop.first("resourcetype", D);
    return resourceType && resourceType->children().empty();
}

std::optional<MRVNotificationType> notificationType(const GDataXMLElement& prop)
{
    const auto type = prop.first("notificationtype", CS);
    if (!type) return std::nullopt;
    const auto kinds = type->children();
    if (kinds.empty() || kinds.front().URI() != CS) return std::nullopt;
    if (kinds.front().name() == "invite-notification") return MRVNotificationType::notification;
    if (kinds.front().name() == "invite-reply") return MRVNotificationType::reply;
    return std::nullopt;
}

} // namespace

std::optional<std::vector<std::shared_ptr<MRVNotificationInfo>>>
MRVNotificationInfoParser::parseInfo() const
{
    std::vector<std::shared_ptr<MRVNotificationInfo>> infos;
    Multistatus::forEachSuccessfulProp(
        rootElement(), [&](const auto& href, const GDataXMLElement& prop) {
            if (!href || !isPlainResource(prop)) return;
            const auto type = notificationType(prop);
            auto path = type ? href->stringValue() : std::nullopt;
            if (!path) return;
            infos.push_back(std::make_shared<MRVNotificationInfo>(
                MRVNotificationInfo {.href = std::move(*path), .notificationType = *type}));
        });
    if (infos.empty()) return std::nullopt;
    return infos;
}

} // namespace Tessel
