#include "Tessel/CaldavLibrary/Operation/Sync/MRVEventsSyncCompleteOperation.h"

namespace Tessel {

void MRVEventsSyncCompleteOperation::main()
{
    const auto delegate = client ? client->syncDelegate() : nullptr;
    if (delegate && calendar) delegate->eventsSyncFinished(std::nullopt, calendar, client);
    setDone(true);
}

} // namespace Tessel
