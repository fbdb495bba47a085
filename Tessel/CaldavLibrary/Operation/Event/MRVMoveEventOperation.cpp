#include "Tessel/CaldavLibrary/Operation/Event/MRVMoveEventOperation.h"

#include "Tessel/CaldavLibrary/Extensions/MemberURL.h"
#include "Tessel/CaldavLibrary/Operation/LogSite.h"
#include "Tessel/Platform/Plinth/Logger.h"

namespace Tessel {

void MRVMoveEventOperation::main()
{
    URLRequest request(absoluteURL(event->href));
    request.method = "MOVE";
    request.headers.set(
        "Destination", memberURL(absoluteURL(destinationCalendar->href), event->href));
    send(request);
}

void MRVMoveEventOperation::read(
    const Data&, const std::optional<Error>& error, std::optional<int> statusCode)
{
    if (error) return completionHandler(error);
    if (!statusCode) return;
    const auto status = forcedStatus(*statusCode);
    if (status != MRVStatusCode::created) {
        Plinth::logger()->log(inMain(Plinth::Level::warning), "status code: ", rawValue(status));
    }
    completionHandler(std::nullopt);
}

} // namespace Tessel
