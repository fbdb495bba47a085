#pragma once

#include "Tessel/Platform/Foundation/Operations/IntrusiveList.h"
#include "Tessel/Platform/Foundation/Operations/KeyValueObservers.h"
#include "Tessel/Platform/Foundation/Operations/Operation.h"
#include "Tessel/Platform/Foundation/Operations/OperationQueue.h"
#include "Tessel/Platform/Foundation/Operations/WorkerPool.h"

#include <condition_variable>
#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <vector>

namespace Tessel {

/// What joins an operation to others; most have none.
struct OperationTies {
    std::vector<std::shared_ptr<Operation>> dependencies;
    std::vector<std::weak_ptr<Operation>> dependents;
    std::function<void()> completionBlock;
};

/// Small enough for what an allocator frees without a lock, since an operation ends on another
/// thread than it was made on.
struct OperationState : IntrusiveLink<OperationState, Operation> {
    enum class Phase : unsigned char { idle, waiting, ready, started, finished };

    KeyValueObservers observers;
    std::atomic<bool> executing {false};
    std::atomic<bool> finished {false};
    std::atomic<bool> cancelled {false};

    // Guarded by the scheduler:
    Phase phase = Phase::idle;
    std::uint32_t waiters = 0;
    OperationQueueState* queue = nullptr;
    std::uint64_t number = 0;
    std::size_t unfinishedDependencies = 0;
    std::unique_ptr<OperationTies> ties;

    bool isReady() const { return unfinishedDependencies == 0 || cancelled; }
    OperationTies& madeTies()
    {
        if (!ties) ties = std::make_unique<OperationTies>();
        return *ties;
    }
};

struct OperationQueueState : IntrusiveLink<OperationQueueState, OperationQueueState> {
    using Ready = std::map<std::uint64_t, Operation*>; ///< by order of adding

    std::ptrdiff_t limit = OperationQueue::defaultMaxConcurrentOperationCount;
    std::ptrdiff_t running = 0;
    std::uint64_t lastNumber = 0;
    IntrusiveList<OperationState, Operation> operations; ///< everything that has not finished
    std::unique_ptr<Ready> ready; ///< waiting for a slot only
    std::size_t waiters = 0;

    bool hasReady() const { return ready && !ready->empty(); }
    bool hasSlot() const { return limit < 0 || running < limit; }
};

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

    void add(const Queue& queue, const std::shared_ptr<Operation>& operation);
    void cancelled(Operation& operation);
    void finished(Operation& operation);

    bool isReady(const Operation& operation);
    void addDependency(Operation& operation, std::shared_ptr<Operation> dependency);
    void removeDependency(Operation& operation, const std::shared_ptr<Operation>& dependency);
    std::vector<std::shared_ptr<Operation>> dependencies(const Operation& operation);
    void setCompletionBlock(Operation& operation, std::function<void()> block);
    void waitUntilFinished(const Operation& operation);

    void setLimit(OperationQueueState& queue, std::ptrdiff_t limit);
    std::ptrdiff_t limit(const OperationQueueState& queue);
    std::vector<std::shared_ptr<Operation>> operations(const OperationQueueState& queue);
    std::size_t operationCount(const OperationQueueState& queue);
    void waitUntilEmpty(OperationQueueState& queue);

private:
    struct Released;

    Scheduler();
    void close();

    void becomeReady(Operation& operation);
    void startReady(OperationQueueState& queue);
    void start(OperationQueueState& queue, Operation& operation);
    void readyDependents(Released& released);
    void leaveQueue(Operation& operation, Released& released);

    std::mutex mutex_;
    std::condition_variable finished_;
    IntrusiveList<OperationQueueState, OperationQueueState> busyQueues_;
    WorkerPool& workers_ = WorkerPool::shared();
};

} // namespace Tessel
