#pragma once

#include "Tessel/Platform/Foundation/Base/Export.h"
#include "Tessel/Platform/Foundation/Operations/Operation.h"

#include <cstddef>
#include <functional>
#include <memory>

namespace Tessel {

struct OperationQueueState;

/// Starts operations when they are ready, on one small set of worker threads that all queues of
/// the process share. A queue lives as long as it holds an operation, also when nobody else holds
/// it; an operation leaves its queue when it has finished.
///
/// All members may be called from any thread, operations and completion blocks included.
///
/// While the process exits, operations run on until the exit has destroyed the objects of static
/// storage that were made after the first operation was queued. A host whose operations use such an
/// object waits for them before it exits.
class TESSEL_EXPORT OperationQueue {
public:
    static constexpr std::ptrdiff_t defaultMaxConcurrentOperationCount = -1; ///< no limit

    OperationQueue();
    ~OperationQueue();
    OperationQueue(const OperationQueue&) = delete;
    OperationQueue& operator=(const OperationQueue&) = delete;

    /// Starts it when it is ready. An operation is queued once.
    void addOperation(std::shared_ptr<Operation> operation);
    void addOperation(std::function<void()> block); ///< the same for a function

    /// How many operations of this queue may execute at a time; ready operations start in the
    /// order in which they were added.
    std::ptrdiff_t maxConcurrentOperationCount() const;
    /// Holds for operations that start from now on.
    void setMaxConcurrentOperationCount(std::ptrdiff_t count);

    std::size_t operationCount() const; ///< operations waiting or executing
    void cancelAllOperations(); ///< asks every operation of the queue not to run
    /// Blocks until the queue is empty or the process exits. Not for worker threads or completions.
    void waitUntilAllOperationsAreFinished() const;

private:
    std::shared_ptr<OperationQueueState> state_;
};

} // namespace Tessel
