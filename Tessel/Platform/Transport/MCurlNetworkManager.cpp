#include "Tessel/Platform/Transport/MCurlNetworkManager.h"

#include "Tessel/Platform/Transport/RequestFields.h"
#include "Tessel/Platform/Transport/TransferLoop.h"

#include <atomic>

namespace Tessel {

namespace {

int nextTaskNumber()
{
    static std::atomic<unsigned> last {0};
    return static_cast<int>(last++ % 0x7FFF'FFFF) + 1;
}

} // namespace

MCurlNetworkManager::MCurlNetworkManager(MNetworkConfiguration configuration)
    : configuration_(std::make_shared<const MNetworkConfiguration>(std::move(configuration)))
{
}

MNetworkConfiguration MCurlNetworkManager::configuration() const
{
    const std::lock_guard lock(mutex_);
    return *configuration_;
}

void MCurlNetworkManager::setConfiguration(MNetworkConfiguration configuration)
{
    auto chosen = std::make_shared<const MNetworkConfiguration>(std::move(configuration));
    const std::lock_guard lock(mutex_);
    configuration_.swap(chosen);
}

int MCurlNetworkManager::send(MTask task)
{
    mergeIntoRequest(task);
    auto exchange = std::make_unique<SentTask>(
        SentTask {.task = std::move(task), .number = nextTaskNumber()});
    const auto number = exchange->number;
    {
        const std::lock_guard lock(mutex_);
        exchange->configuration = configuration_;
    }
    TransferLoop::shared().submit(std::move(exchange));
    return number;
}

void MCurlNetworkManager::cancel(int number)
{
    TransferLoop::shared().cancel(number);
}

} // namespace Tessel
