#pragma once

#include "Tessel/Platform/Foundation/Operations/OperationState.h"

#include <condition_variable>
#include <cstddef>
#include <functional>
#include <memory>
#include <mutex>
#include <vector>

namespace Tessel {

/// Decides for all queues of the process which operation starts when. One lock guards the life
/// cycles, since a dependency may join any two queues; what it guards is short and each step takes
/// constant time. No host code runs under it: whatever a step lets go of is destroyed after it.
///
/// Queues that hold operations are held here, which is what keeps an operation alive that never
/// finishes.
///
/// The scheduler is never destroyed, since a worker or a transport may finish an operation while
/// the process exits. The exit reaches it after the objects of static storage that are younger than
/// the scheduler are destroyed, and before older ones are: then nothing starts any more, every wait
/// returns, and the exit waits a moment for what runs.
class Scheduler {
public:
    using Queue = std::shared_ptr<OperationQueueState>;

    static Scheduler& shared();

    void add(const Queue& queue, const std::shared_ptr<OperationState>& operation);
    void cancelled(OperationState& operation);
    /// `self` is what shares the operation, null for one that nobody shares.
    void finished(OperationState& operation, std::shared_ptr<const void> self);

    bool isReady(const OperationState& operation);
    void addDependency(const std::shared_ptr<OperationState>& operation,
        std::shared_ptr<OperationState> dependency);
    void removeDependency(const std::shared_ptr<OperationState>& operation,
        const std::shared_ptr<OperationState>& dependency);
    std::vector<std::shared_ptr<OperationState>> dependencies(const OperationState& operation);
    void setCompletionBlock(OperationState& operation, std::function<void()> block);
    void waitUntilFinished(OperationState& operation);

    void setLimit(OperationQueueState& queue, std::ptrdiff_t limit);
    std::ptrdiff_t limit(const OperationQueueState& queue);
    std::vector<std::shared_ptr<OperationState>> operations(const OperationQueueState& queue);
    std::size_t operationCount(const OperationQueueState& queue);
    void waitUntilEmpty(OperationQueueState& queue);

private:
    struct Released;

    Scheduler();
    void close();

    void becomeReady(OperationState& operation);
    void startReady(OperationQueueState& queue);
    void start(OperationQueueState& queue, OperationState& operation);
    void readyDependents(Released& released);
    void leaveQueue(OperationState& operation, Released& released);

    std::mutex mutex_;
    std::condition_variable finished_;
    IntrusiveList<OperationQueueState> busyQueues_;
    WorkerPool& workers_ = WorkerPool::shared();
};

} // namespace Tessel
