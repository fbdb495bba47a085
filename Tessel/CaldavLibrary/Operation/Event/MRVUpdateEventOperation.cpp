#include "Tessel/CaldavLibrary/Operation/Event/MRVUpdateEventOperation.h"

#include "Tessel/CaldavLibrary/Extensions/URLRequestExtension.h"
#include "Tessel/CaldavLibrary/Operation/LogSite.h"
#include "Tessel/Platform/Plinth/Logger.h"

namespace Tessel {

using Plinth::Level;

void MRVUpdateEventOperation::main()
{
    const auto logger = Plinth::logger();
    logger->log(Level::debug, "event update operation");
    URLRequest request(absoluteURL(event->href));
    auto ics = event->iCalendarString();
    if (!ics) {
        logger->log(Level::debug, "icalstring can't be parsed");
        setDone(true);
        return;
    }
    request.method = "PUT";
    logger->log(Level::debug, "eTag: ", event->eTag);
    request.headers.set("If-Match", event->eTag);
    setICalBody(request, std::move(*ics));
    send(request);
}

void MRVUpdateEventOperation::read(
    const Data&, const std::optional<Error>& error, std::optional<int> statusCode)
{
    if (error) return completionHandler(error);
    if (!statusCode) return;
    const auto status = forcedStatus(*statusCode);
    const auto logger = Plinth::logger();
    if (status == MRVStatusCode::noContent) {
        logger->log(inMain(Level::debug), "edit successful");
    } else {
        logger->log(inMain(Level::warning), "edit failed status code: ", rawValue(status));
    }
    completionHandler(std::nullopt);
}

} // namespace Tessel
