#include "Tessel/CaldavLibrary/Operation/AccountInfo/MRVGetScheduleDefaultOperation.h"

#include "Tessel/CaldavLibrary/Extensions/URLRequestExtension.h"
#include "Tessel/CaldavLibrary/Extensions/XMLNamespace.h"
#include "Tessel/CaldavLibrary/Operation/AccountInfo/AccountDiscovery.h"

namespace Tessel {

void MRVGetScheduleDefaultOperation::main()
{
    if (client && client->account()->scheduleDefaultURL) return;
    if (!client || !client->account()->scheduleInboxURL) {
        setDone(true);
        return;
    }
    URLRequest request(absoluteURL(*client->account()->scheduleInboxURL));
    request.method = "PROPFIND";
    request.headers.set("Depth", "0");
    setXMLBody(request,
        AccountDiscovery::propfindBody({{"schedule-default-calendar-URL", XMLNamespace::caldav}}));
    process(request, "Schedule Default URL", nullptr, [](const Data&, const auto&, auto) {});
}

} // namespace Tessel
