#include "Tessel/CaldavLibrary/Operation/Notification/MRVGetNotificationsInfoOperation.h"

#include "Tessel/CaldavLibrary/Extensions/FixedBody.h"
#include "Tessel/CaldavLibrary/Extensions/URLRequestExtension.h"
#include "Tessel/CaldavLibrary/Parsers/MRVNotificationInfoParser.h"

namespace Tessel {

namespace {

constexpr FixedBody body(R"(
<?xml version="1.0" encoding="utf-8" ?>
<D:propfind xmlns:D="DAV:" xmlns:C="urn:ietf:params:xml:ns:caldav" xmlns:CS="http://calendarserver.org/ns/">
  <D:prop>
    <D:resourcetype />
    <CS:notificationtype />
  </D:prop>
</D:propfind>)");

} // namespace

void MRVGetNotificationsInfoOperation::main()
{
    if (!client || !client->account()->notificationURL) return;

    URLRequest request(absoluteURL(*client->account()->notificationURL));
    setPropfind(request, Depth::members, body.text());
    process(request, "Notifications Info", nullptr,
        [weak = weakly(this)](const Data& data, const auto& error, auto) {
            if (error) return;
            if (const auto self = weak.lock()) self->read(data);
        });
}

void MRVGetNotificationsInfoOperation::read(const Data& data)
{
    auto infos = MRVNotificationInfoParser(data, client->account()).parseInfo();
    if (infos) notificationInfo = std::move(*infos);
}

} // namespace Tessel
