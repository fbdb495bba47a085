#include "Tessel/Platform/Foundation/Operations/Scheduler.h"

#include "Tessel/Platform/Foundation/Base/FatalError.h"

#include <cstdlib>
#include <utility>

namespace Tessel {

using Phase = OperationState::Phase;

/// What a step lets go of. It is destroyed outside the lock, since destructors of operations and
/// of what their closures captured are host code.
struct Scheduler::Released {
    std::shared_ptr<OperationState> operation;
    std::unique_ptr<OperationTies> ties;
    std::vector<std::shared_ptr<OperationState>> dependents;
    Queue queue;
};

Scheduler& Scheduler::shared()
{
    static auto& scheduler = *new Scheduler;
    return scheduler;
}

Scheduler::Scheduler()
{
    std::atexit([] { shared().close(); });
}

void Scheduler::close()
{
    workers_.close();
    {
        const std::lock_guard lock(mutex_);
        finished_.notify_all();
    }
    workers_.waitUntilQuiet();
}

void Scheduler::add(const Queue& queue, const std::shared_ptr<OperationState>& operation)
{
    auto& state = *operation;
    std::unique_lock lock(mutex_);
    if (state.phase != Phase::idle) {
        lock.unlock();
        fatalError("an operation is added to a queue after it was queued or has finished");
    }
    state.phase = Phase::waiting;
    state.queue = queue.get();
    state.number = ++queue->lastNumber;
    if (queue->operations.isEmpty()) busyQueues_.append(queue);
    queue->operations.append(operation);
    if (state.isReady()) becomeReady(state);
}

void Scheduler::cancelled(OperationState& operation)
{
    const std::lock_guard lock(mutex_);
    if (operation.phase == Phase::waiting) becomeReady(operation);
}

void Scheduler::finished(OperationState& operation, std::shared_ptr<const void> self)
{
    Released released;
    const std::lock_guard lock(mutex_);
    if (operation.phase == Phase::finished) return;

    released.ties = std::move(operation.ties);
    if (released.ties) readyDependents(released);
    leaveQueue(operation, released);
    operation.phase = Phase::finished;
    if (released.ties && released.ties->completionBlock) {
        // The block may refer to its operation weakly, so the operation lives until it has run.
        workers_.submit([self = std::move(self),
                            block = std::move(released.ties->completionBlock)] { block(); });
    }
    if (operation.waiters > 0) finished_.notify_all();
}

void Scheduler::readyDependents(Released& released)
{
    for (const auto& reference : released.ties->dependents) {
        auto dependent = reference.lock();
        if (!dependent) continue;
        --dependent->unfinishedDependencies;
        if (dependent->phase == Phase::waiting && dependent->isReady()) becomeReady(*dependent);
        released.dependents.push_back(std::move(dependent));
    }
}

void Scheduler::leaveQueue(OperationState& operation, Released& released)
{
    if (!operation.queue) return;
    auto& queue = *std::exchange(operation.queue, nullptr);
    if (operation.phase == Phase::started) --queue.running;
    if (operation.phase == Phase::ready) queue.ready->erase(operation.number);
    released.operation = queue.operations.remove(operation);
    startReady(queue);

    if (!queue.operations.isEmpty()) return;
    released.queue = busyQueues_.remove(queue);
    if (queue.waiters > 0) finished_.notify_all();
}

void Scheduler::becomeReady(OperationState& operation)
{
    auto& queue = *operation.queue;
    if (!queue.hasReady() && queue.hasSlot()) {
        start(queue, operation);
    } else {
        operation.phase = Phase::ready;
        if (!queue.ready) queue.ready = std::make_unique<OperationQueueState::Ready>();
        queue.ready->emplace_hint(queue.ready->end(), operation.number, &operation);
    }
}

void Scheduler::startReady(OperationQueueState& queue)
{
    while (queue.hasReady() && queue.hasSlot()) {
        auto& next = *queue.ready->begin()->second;
        queue.ready->erase(queue.ready->begin());
        start(queue, next);
    }
}

void Scheduler::start(OperationQueueState& queue, OperationState& operation)
{
    operation.phase = Phase::started;
    ++queue.running;
    workers_.submit(operation.held);
}

bool Scheduler::isReady(const OperationState& operation)
{
    const std::lock_guard lock(mutex_);
    return operation.isReady();
}

void Scheduler::addDependency(
    const std::shared_ptr<OperationState>& operation, std::shared_ptr<OperationState> dependency)
{
    auto& state = *operation;
    const std::lock_guard lock(mutex_);
    if (state.phase == Phase::started || state.phase == Phase::finished) return;
    if (dependency->phase != Phase::finished) {
        dependency->madeTies().dependents.push_back(operation);
        ++state.unfinishedDependencies;
        if (state.phase == Phase::ready && !state.isReady()) {
            state.queue->ready->erase(state.number);
            state.phase = Phase::waiting;
        }
    }
    state.madeTies().dependencies.push_back(std::move(dependency));
}

void Scheduler::removeDependency(const std::shared_ptr<OperationState>& operation,
    const std::shared_ptr<OperationState>& dependency)
{
    auto& state = *operation;
    const std::lock_guard lock(mutex_);
    // The caller holds the dependency, so that erasing destroys none.
    std::erase(state.madeTies().dependencies, dependency);
    state.unfinishedDependencies
        -= std::erase_if(dependency->madeTies().dependents, [&operation](const auto& dependent) {
               return !dependent.owner_before(operation) && !operation.owner_before(dependent);
           });
    if (state.phase == Phase::waiting && state.isReady()) becomeReady(state);
}

std::vector<std::shared_ptr<OperationState>> Scheduler::dependencies(
    const OperationState& operation)
{
    const std::lock_guard lock(mutex_);
    if (!operation.ties) return {};
    return operation.ties->dependencies;
}

void Scheduler::setCompletionBlock(OperationState& operation, std::function<void()> block)
{
    const std::lock_guard lock(mutex_);
    operation.madeTies().completionBlock.swap(block);
}

void Scheduler::waitUntilFinished(OperationState& operation)
{
    std::unique_lock lock(mutex_);
    ++operation.waiters;
    finished_.wait(lock, [&] { return operation.phase == Phase::finished || workers_.isClosed(); });
    --operation.waiters;
}

void Scheduler::setLimit(OperationQueueState& queue, std::ptrdiff_t limit)
{
    const std::lock_guard lock(mutex_);
    queue.limit = limit;
    startReady(queue);
}

std::ptrdiff_t Scheduler::limit(const OperationQueueState& queue)
{
    const std::lock_guard lock(mutex_);
    return queue.limit;
}

std::vector<std::shared_ptr<OperationState>> Scheduler::operations(const OperationQueueState& queue)
{
    const std::lock_guard lock(mutex_);
    std::vector<std::shared_ptr<OperationState>> all;
    all.reserve(queue.operations.size());
    for (const auto* state = queue.operations.first(); state; state = state->next)
        all.push_back(state->held);
    return all;
}

std::size_t Scheduler::operationCount(const OperationQueueState& queue)
{
    const std::lock_guard lock(mutex_);
    return queue.operations.size();
}

void Scheduler::waitUntilEmpty(OperationQueueState& queue)
{
    std::unique_lock lock(mutex_);
    ++queue.waiters;
    finished_.wait(lock, [&] { return queue.operations.isEmpty() || workers_.isClosed(); });
    --queue.waiters;
}

} // namespace Tessel
