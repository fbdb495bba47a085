#include "Tessel/CaldavLibrary/Operation/AccountInfo/MRVGetScheduleDefaultOperation.h"

#include "Tessel/CaldavLibrary/Extensions/URLRequestExtension.h"
#include "Tessel/CaldavLibrary/Extensions/XMLNamespace.h"
#include "Tessel/CaldavLibrary/Operation/AccountInfo/PropfindBody.h"

namespace Tessel {

void MRVGetScheduleDefaultOperation::main()
{
    if (client && client->account()->scheduleDefaultURL) return;
    if (!client || !client->account()->scheduleInboxURL) {
        setDone(true);
        return;
    }
    URLRequest request(absoluteURL(*client->account()->scheduleInboxURL));
    setPropfind(request, Depth::resource,
        propfindBody({{"schedule-default-calendar-URL", XMLNamespace::caldav}}));
    process(request, "Schedule Default URL", nullptr, [](const Data&, const auto&, auto) {});
}

} // namespace Tessel
