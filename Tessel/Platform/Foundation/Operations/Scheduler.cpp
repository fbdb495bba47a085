#include "Tessel/Platform/Foundation/Operations/Scheduler.h"

#include "Tessel/Platform/Foundation/Base/FatalError.h"

#include <cstdlib>
#include <utility>

namespace Tessel {

using Phase = OperationState::Phase;

/// What a step lets go of. It is destroyed outside the lock, since destructors of operations and
/// of what their closures captured are host code.
struct Scheduler::Released {
    std::shared_ptr<Operation> operation;
    std::unique_ptr<OperationTies> ties;
    std::vector<std::shared_ptr<Operation>> dependents;
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

void Scheduler::add(const Queue& queue, const std::shared_ptr<Operation>& operation)
{
    auto& state = *operation->state_;
    std::unique_lock lock(mutex_);
    if (state.phase != Phase::idle) {
        lock.unlock();
        fatalError("an operation is added to a queue after it was queued or has finished");
    }
    state.phase = Phase::waiting;
    state.queue = queue.get();
    state.number = ++queue->lastNumber;
    if (queue->operations.isEmpty()) busyQueues_.append(*queue, queue);
    queue->operations.append(state, operation);
    if (state.isReady()) becomeReady(*operation);
}

void Scheduler::cancelled(Operation& operation)
{
    const std::lock_guard lock(mutex_);
    if (operation.state_->phase == Phase::waiting) becomeReady(operation);
}

void Scheduler::finished(Operation& operation)
{
    Released released;
    auto& state = *operation.state_;
    const std::lock_guard lock(mutex_);
    if (state.phase == Phase::finished) return;

    released.ties = std::move(state.ties);
    if (released.ties) readyDependents(released);
    leaveQueue(operation, released);
    state.phase = Phase::finished;
    if (released.ties && released.ties->completionBlock) {
        // The block may refer to its operation weakly, so the operation lives until it has run.
        workers_.submit([self = operation.weak_from_this().lock(),
                            block = std::move(released.ties->completionBlock)] { block(); });
    }
    if (state.waiters > 0) finished_.notify_all();
}

void Scheduler::readyDependents(Released& released)
{
    for (const auto& reference : released.ties->dependents) {
        auto dependent = reference.lock();
        if (!dependent) continue;
        auto& state = *dependent->state_;
        --state.unfinishedDependencies;
        if (state.phase == Phase::waiting && state.isReady()) becomeReady(*dependent);
        released.dependents.push_back(std::move(dependent));
    }
}

void Scheduler::leaveQueue(Operation& operation, Released& released)
{
    auto& state = *operation.state_;
    if (!state.queue) return;
    auto& queue = *std::exchange(state.queue, nullptr);
    if (state.phase == Phase::started) --queue.running;
    if (state.phase == Phase::ready) queue.ready->erase(state.number);
    released.operation = queue.operations.remove(state);
    startReady(queue);

    if (!queue.operations.isEmpty()) return;
    released.queue = busyQueues_.remove(queue);
    if (queue.waiters > 0) finished_.notify_all();
}

void Scheduler::becomeReady(Operation& operation)
{
    auto& state = *operation.state_;
    auto& queue = *state.queue;
    if (!queue.hasReady() && queue.hasSlot()) {
        start(queue, operation);
    } else {
        state.phase = Phase::ready;
        if (!queue.ready) queue.ready = std::make_unique<OperationQueueState::Ready>();
        queue.ready->emplace_hint(queue.ready->end(), state.number, &operation);
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

void Scheduler::start(OperationQueueState& queue, Operation& operation)
{
    auto& state = *operation.state_;
    state.phase = Phase::started;
    ++queue.running;
    workers_.submit(state.held);
}

bool Scheduler::isReady(const Operation& operation)
{
    const std::lock_guard lock(mutex_);
    return operation.state_->isReady();
}

void Scheduler::addDependency(Operation& operation, std::shared_ptr<Operation> dependency)
{
    auto& state = *operation.state_;
    const std::lock_guard lock(mutex_);
    if (state.phase == Phase::started || state.phase == Phase::finished) return;
    if (dependency->state_->phase != Phase::finished) {
        dependency->state_->madeTies().dependents.push_back(operation.weak_from_this());
        ++state.unfinishedDependencies;
        if (state.phase == Phase::ready && !state.isReady()) {
            state.queue->ready->erase(state.number);
            state.phase = Phase::waiting;
        }
    }
    state.madeTies().dependencies.push_back(std::move(dependency));
}

void Scheduler::removeDependency(Operation& operation, const std::shared_ptr<Operation>& dependency)
{
    auto& state = *operation.state_;
    const std::lock_guard lock(mutex_);
    // The caller holds the dependency, so that erasing destroys none.
    std::erase(state.madeTies().dependencies, dependency);
    const auto self = operation.weak_from_this();
    state.unfinishedDependencies
        -= std::erase_if(dependency->state_->madeTies().dependents, [&self](const auto& dependent) {
               return !dependent.owner_before(self) && !self.owner_before(dependent);
           });
    if (state.phase == Phase::waiting && state.isReady()) becomeReady(operation);
}

std::vector<std::shared_ptr<Operation>> Scheduler::dependencies(const Operation& operation)
{
    const std::lock_guard lock(mutex_);
    const auto& ties = operation.state_->ties;
    return ties ? ties->dependencies : std::vector<std::shared_ptr<Operation>> {};
}

void Scheduler::setCompletionBlock(Operation& operation, std::function<void()> block)
{
    const std::lock_guard lock(mutex_);
    operation.state_->madeTies().completionBlock.swap(block);
}

void Scheduler::waitUntilFinished(const Operation& operation)
{
    std::unique_lock lock(mutex_);
    auto& state = *operation.state_;
    ++state.waiters;
    finished_.wait(lock, [&] { return state.phase == Phase::finished || workers_.isClosed(); });
    --state.waiters;
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

std::vector<std::shared_ptr<Operation>> Scheduler::operations(const OperationQueueState& queue)
{
    const std::lock_guard lock(mutex_);
    std::vector<std::shared_ptr<Operation>> all;
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
