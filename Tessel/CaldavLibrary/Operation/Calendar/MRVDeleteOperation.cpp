#include "Tessel/CaldavLibrary/Operation/Calendar/MRVDeleteOperation.h"

namespace Tessel {

void MRVDeleteOperation::main()
{
    URLRequest request(absoluteURL(url));
    request.method = "DELETE";
    process(request, "Delete Operation", nullptr,
        [weak = weakly(this)](const Data&, const auto& error, auto status) {
            if (error || status != MRVStatusCode::noContent) return;
            if (const auto self = weak.lock()) self->completionHandler(std::nullopt);
        });
}

} // namespace Tessel
