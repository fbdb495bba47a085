#include "Tessel/CaldavLibrary/Operation/MRVWriteOperation.h"

#include "Tessel/CaldavLibrary/Operation/LogSite.h"
#include "Tessel/Platform/Foundation/Base/FatalError.h"
#include "Tessel/Platform/Foundation/Web/HTTPURLResponse.h"
#include "Tessel/Platform/Plinth/Logger.h"

namespace Tessel {

void MRVWriteOperation::send(const URLRequest& request)
{
    const auto authority = client ? client->authDelegate() : nullptr;
    if (!authority) {
        notSent();
        setDone(true);
        return;
    }
    authorizeAndSend(request, *authority, nullptr,
        [weak = weakly(this)](const Data& data, const auto& response, const auto& error) {
            const auto self = weak.lock();
            if (!self) return;
            if (error)
                Plinth::logger()->log(inMain(Plinth::Level::error), error->localizedDescription);
            const auto http = dynamic_cast<const HTTPURLResponse*>(response.get());
            const bool hasStatus = http && !error;
            self->read(data, error, hasStatus ? std::optional(http->statusCode) : std::nullopt);
            self->setDone(true);
        });
}

MRVStatusCode MRVWriteOperation::forcedStatus(int statusCode)
{
    if (const auto status = fromRawValue<MRVStatusCode>(statusCode)) return *status;
    fatalError("no status code case for the HTTP status " + std::to_string(statusCode));
}

} // namespace Tessel
