#include "Tessel/CaldavLibrary/Operation/Event/MRVGetEventsOperation.h"

#include "Tessel/CaldavLibrary/Extensions/FixedBody.h"
#include "Tessel/CaldavLibrary/Extensions/URLRequestExtension.h"
#include "Tessel/CaldavLibrary/Operation/LogSite.h"
#include "Tessel/CaldavLibrary/Parsers/MRVEventsParser.h"
#include "Tessel/Platform/Plinth/Logger.h"

namespace Tessel {

namespace {

constexpr FixedBody bodyBegin(R"(
<?xml version="1.0" encoding="utf-8" ?>
<c:calendar-multiget xmlns:d="DAV:" xmlns:c="urn:ietf:params:xml:ns:caldav">
  <d:prop>
    <d:getetag />
    <c:schedule-tag />
    <c:calendar-data />
  </d:prop>)");

} // namespace

void MRVGetEventsOperation::main()
{
    if (!events) return;
    if (events->empty()) {
        setDone(true);
        return;
    }
    URLRequest request(absoluteURL(calendar->href));
    setReport(request, body());

    const std::string message = hasNewEvents ? "New Events" : "Edited Events";
    process(request, message, nullptr,
        [weak = weakly(this), message](const Data& data, const auto& error, auto) {
            Plinth::logger()->log(
                inMain(Plinth::Level::debug), "get events resp - msg: ", message, ", data: ", data);
            if (error) return;
            if (const auto self = weak.lock()) self->read(data);
        });
}

std::string MRVGetEventsOperation::body() const
{
    auto text = bodyBegin.text();
    for (const auto& descriptor : *events) {
        text.append("<d:href>").append(descriptor->href).append("</d:href>");
    }
    return text.append("</c:calendar-multiget>");
}

void MRVGetEventsOperation::read(const Data& data)
{
    MRVEventsParser parser(data, nullptr);
    parser.calendar = calendar;
    if (const auto fetched = parser.parseEvents()) {
        process(*fetched, std::nullopt);
    } else if (completion) {
        completion(std::nullopt, std::nullopt);
    }
}

void MRVGetEventsOperation::process(const Events& fetched, const std::optional<Error>& error)
{
    if (fetched.empty()) {
        Plinth::logger()->log(Plinth::Level::debug, "No events obtained from fetch");
        return;
    }
    const auto delegate = client ? client->syncDelegate() : nullptr;
    if (!delegate) return;
    if (completion) {
        completion(fetched, error);
    } else if (hasNewEvents) {
        delegate->eventsAdded(fetched, calendar, client->account(), client);
    } else {
        delegate->eventsEdited(fetched, calendar, client->account(), client);
    }
}

} // namespace Tessel
