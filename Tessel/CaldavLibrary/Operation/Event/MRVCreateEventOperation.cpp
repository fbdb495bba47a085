#include "Tessel/CaldavLibrary/Operation/Event/MRVCreateEventOperation.h"

#include "Tessel/CaldavLibrary/Extensions/MemberURL.h"
#include "Tessel/CaldavLibrary/Extensions/URLRequestExtension.h"
#include "Tessel/CaldavLibrary/Operation/LogSite.h"
#include "Tessel/Platform/Foundation/Text/UUID.h"
#include "Tessel/Platform/Foundation/Web/URL.h"
#include "Tessel/Platform/Plinth/Logger.h"

namespace Tessel {

using Plinth::Level;

void MRVCreateEventOperation::main()
{
    event->uid = makeUUID() + "mcaldav";
    auto ics = event->iCalendarString();
    if (!ics) {
        Plinth::logger()->log(Level::debug, "can't get iCalString");
        setDone(true);
        return;
    }
    const auto url = memberURL(absoluteURL(event->calendar->href), event->uid + ".ics");
    Plinth::logger()->log(Level::debug, "create event URL: ", withoutUserInfo(url));

    URLRequest request(url);
    request.method = "PUT";
    request.headers.set("If-None-Match", "*");
    setICalBody(request, std::move(*ics));
    send(request);
}

void MRVCreateEventOperation::read(
    const Data&, const std::optional<Error>& error, std::optional<int> statusCode)
{
    if (error) return completionHandler(std::nullopt, error);
    if (!statusCode) return;
    const auto status = forcedStatus(*statusCode);
    if (status == MRVStatusCode::created) return completionHandler(event->uid, std::nullopt);
    Plinth::logger()->log(inMain(Level::warning), "status code: ", rawValue(status));
}

} // namespace Tessel
