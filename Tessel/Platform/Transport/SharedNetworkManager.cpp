#include "Tessel/Platform/Transport/MNetworkManager.h"

#include "Tessel/Platform/Transport/MCurlNetworkManager.h"

#include <mutex>

namespace Tessel {

namespace {

struct SharedInstance {
    std::mutex mutex;
    std::shared_ptr<MNetworkManager> chosen;
    const std::shared_ptr<MNetworkManager> standard = std::make_shared<MCurlNetworkManager>();
};

// Never destroyed: other threads may still send while the process exits.
SharedInstance& shared()
{
    static auto& instance = *new SharedInstance;
    return instance;
}

} // namespace

MNetworkManager::~MNetworkManager() = default;

void MNetworkManager::cancel(int) { }

std::shared_ptr<MNetworkManager> MNetworkManager::sharedInstance()
{
    const std::lock_guard lock(shared().mutex);
    return shared().chosen ? shared().chosen : shared().standard;
}

void MNetworkManager::setSharedInstance(std::shared_ptr<MNetworkManager> manager)
{
    // Swapped, so that the old one is destroyed after the lock has been released.
    const std::lock_guard lock(shared().mutex);
    shared().chosen.swap(manager);
}

} // namespace Tessel
