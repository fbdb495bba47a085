#include "Tessel/Platform/Foundation/Operations/OperationQueue.h"

#include "Tessel/Platform/Foundation/Base/FatalError.h"
#include "Tessel/Platform/Foundation/Operations/Scheduler.h"

#include <utility>

namespace Tessel {

namespace {

class BlockOperation final : public Operation {
public:
    explicit BlockOperation(std::function<void()> block)
        : block_(std::move(block))
    {
    }

    void main() override { block_(); }

private:
    std::function<void()> block_;
};

} // namespace

OperationQueue::OperationQueue()
    : state_(std::make_shared<OperationQueueState>())
{
}

OperationQueue::~OperationQueue() = default;

void OperationQueue::addOperation(std::shared_ptr<Operation> operation)
{
    if (!operation) fatalError("no operation is added to a queue");
    if (operation->isExecuting() || operation->isFinished()) {
        fatalError("an operation is added to a queue after it has started");
    }
    Scheduler::shared().add(state_, Operation::shared(operation));
}

void OperationQueue::addOperation(std::function<void()> block)
{
    if (!block) fatalError("an empty block is added to a queue");
    addOperation(std::make_shared<BlockOperation>(std::move(block)));
}

std::ptrdiff_t OperationQueue::maxConcurrentOperationCount() const
{
    return Scheduler::shared().limit(*state_);
}

void OperationQueue::setMaxConcurrentOperationCount(std::ptrdiff_t count)
{
    if (count < defaultMaxConcurrentOperationCount) {
        fatalError("a queue cannot execute a negative number of operations");
    }
    Scheduler::shared().setLimit(*state_, count);
}

std::size_t OperationQueue::operationCount() const
{
    return Scheduler::shared().operationCount(*state_);
}

void OperationQueue::cancelAllOperations()
{
    for (const auto& state : Scheduler::shared().operations(*state_))
        state->operation.cancel();
}

void OperationQueue::waitUntilAllOperationsAreFinished() const
{
    const auto state = state_;
    Scheduler::shared().waitUntilEmpty(*state);
}

} // namespace Tessel
