#pragma once

#include "Tessel/Platform/Foundation/Operations/IntrusiveList.h"
#include "Tessel/Platform/Foundation/Operations/WorkerPool.h"

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <vector>

namespace Tessel {

class Operation;
struct OperationQueueState;
struct OperationState;

/// What joins an operation to others; most have none.
struct OperationTies {
    std::vector<std::shared_ptr<OperationState>> dependencies;
    std::vector<std::weak_ptr<OperationState>> dependents;
    std::function<void()> completionBlock;
};

/// What the scheduler knows of an operation. It lies within the operation: who shares the state
/// shares the operation.
///
/// Small enough for what an allocator frees without a lock, since an operation ends on another
/// thread than it was made on.
struct OperationState : Runnable, IntrusiveLink<OperationState> {
    enum class Phase : unsigned char { idle, waiting, ready, started, finished };

    explicit OperationState(Operation& operation)
        : operation(operation)
    {
    }

    Operation& operation;
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

protected:
    ~OperationState() = default;
};

struct OperationQueueState : IntrusiveLink<OperationQueueState> {
    using Ready = std::map<std::uint64_t, OperationState*>; ///< by order of adding

    std::ptrdiff_t limit = -1; ///< of those that run at a time; below 0 there is none
    std::ptrdiff_t running = 0;
    std::uint64_t lastNumber = 0;
    IntrusiveList<OperationState> operations; ///< everything that has not finished
    std::unique_ptr<Ready> ready; ///< waiting for a slot only
    std::size_t waiters = 0;

    bool hasReady() const { return ready && !ready->empty(); }
    bool hasSlot() const { return limit < 0 || running < limit; }
};

} // namespace Tessel
