#include "Tessel/CaldavLibrary/Operation/Calendar/MRVGetCalendarsOperation.h"

#include "Tessel/CaldavLibrary/Extensions/FixedBody.h"
#include "Tessel/CaldavLibrary/Extensions/URLRequestExtension.h"
#include "Tessel/CaldavLibrary/Operation/LogSite.h"
#include "Tessel/CaldavLibrary/Parsers/MRVCalendarParser.h"
#include "Tessel/Platform/Foundation/Base/FatalError.h"
#include "Tessel/Platform/Plinth/Logger.h"

namespace Tessel {

namespace {

constexpr FixedBody body(R"(
<?xml version="1.0" encoding="utf-8" ?>
<d:propfind xmlns:d="DAV:" xmlns:cs="http://calendarserver.org/ns/" xmlns:c="urn:ietf:params:xml:ns:caldav" xmlns:ical="http://apple.com/ns/ical/">
  <d:prop>
    <d:resourcetype />
    <d:displayname />
    <d:owner />
    <d:sync-token />
    <d:current-user-privilege-set />
    <c:supported-calendar-component-set />
    <c:calendar-free-busy-set />
    <c:calendar-description />
    <c:calendar-timezone />
    <c:schedule-calendar-transp />
    <cs:pre-publish-url />
    <cs:publish-url />
    <cs:getctag />
    <ical:calendar-color />
    <ical:calendar-order />
    <ical:refreshrate />
    <cs:allowed-sharing-modes />
    <cs:invite />
  </d:prop>
</d:propfind>)");

} // namespace

MRVGetCalendarsOperation::MRVGetCalendarsOperation(std::shared_ptr<MRVClient> client,
    std::shared_ptr<MRVAccountInfoProvider> accountInfoProvider, CompletionHandler completion)
    : completionHandler(std::move(completion))
{
    this->client = std::move(client);
    this->accountInfoProvider = std::move(accountInfoProvider);
}

void MRVGetCalendarsOperation::main()
{
    const auto& home = account()->calendarHomeURL;
    if (!home) fatalError("the calendar home is not known");

    URLRequest request(absoluteURL(*home));
    setPropfind(request, Depth::members, body.text());
    process(request, "Calendars", nullptr,
        [weak = weakly(this)](const Data& data, const auto& error, auto) {
            if (error) return;
            if (const auto self = weak.lock()) self->read(data);
        });
}

void MRVGetCalendarsOperation::read(const Data& data)
{
    Plinth::logger()->log(inMain(Plinth::Level::debug), "cals response: ", data);
    const auto owner = client ? client->account() : nullptr;
    completionHandler(MRVCalendarParser(data, owner).parseCalendars(), std::nullopt);
}

} // namespace Tessel
