#include "Tessel/CaldavLibrary/MRVClient.h"

namespace Tessel {

MRVClient::MRVClient(
    std::shared_ptr<MRVAccount> account, const std::shared_ptr<MRVAuthDelegate>& authDelegate)
    : account_(std::move(account))
    , authDelegate_(authDelegate)
{
}

OperationQueue& MRVClient::syncQueue()
{
    std::call_once(syncQueueMade_, [this] {
        syncQueue_ = std::make_unique<OperationQueue>();
        syncQueue_->setMaxConcurrentOperationCount(1);
    });
    return *syncQueue_;
}

} // namespace Tessel
