#pragma once

#include "Tessel/Platform/Foundation/Base/Export.h"

#include <functional>
#include <memory>
#include <string_view>
#include <vector>

namespace Tessel {

class OperationQueue;
struct OperationState;

/// One piece of work with a life cycle that others can observe, wait for and depend on. Operations
/// are made with `std::make_shared` and run once, normally by an `OperationQueue`. An exception
/// that leaves an operation, observer or block on a worker thread ends the process.
///
/// `start()` of this class runs `main()` and finishes. A concurrent operation overrides `start()`,
/// `isConcurrent()`, `isExecuting()` and `isFinished()` and announces every change of the two flags
/// with `willChangeValue` and `didChangeValue`; its queue counts it as running until the change of
/// "isFinished" has been announced.
class TESSEL_EXPORT Operation : public std::enable_shared_from_this<Operation> {
public:
    /// Whether an observed value is about to change or has changed.
    enum class Change { will, did };
    /// Called on the thread that makes the change; must not throw.
    using Observer = std::function<void(Operation& operation, std::string_view key, Change change)>;
    using ObserverToken = int; ///< what `removeObserver` takes

    Operation();
    virtual ~Operation();
    Operation(const Operation&) = delete;
    Operation& operator=(const Operation&) = delete;

    virtual void start(); ///< runs `main()` unless the operation was cancelled, and finishes
    virtual void main(); ///< the work; does nothing in this class
    /// Whether it finishes by itself, after `start()` has returned.
    virtual bool isConcurrent() const;
    virtual bool isExecuting() const; ///< between the start and the end of its work
    virtual bool isFinished() const; ///< also after it was cancelled before its start

    /// Asks the operation not to run. Work that has started decides for itself whether it heeds it.
    void cancel();
    bool isCancelled() const; ///< whether `cancel()` was called
    /// Whether every dependency has finished, or the operation was cancelled.
    bool isReady() const;

    /// Makes this operation wait for `operation`; call it before queueing this operation, and not
    /// from its constructor: it must be held by a shared pointer already. A cycle never becomes
    /// ready.
    void addDependency(std::shared_ptr<Operation> operation);
    void removeDependency(const std::shared_ptr<Operation>& operation); ///< no longer waits for it
    /// What it waits for; an operation that has finished has let go of its dependencies.
    std::vector<std::shared_ptr<Operation>> dependencies() const;

    /// Runs once, on a worker thread, after the operation has finished (also when it was
    /// cancelled). The operation lives until the block has run, so that the block can lock a weak
    /// pointer to it.
    void setCompletionBlock(std::function<void()> block);

    /// Blocks the calling thread until the operation has finished. Not for worker threads or
    /// completions: they are what would finish it. Returns early when the process exits.
    void waitUntilFinished() const;

    /// Tells `observer` before and after each change of `key` ("isExecuting", "isFinished",
    /// "isCancelled"), on the thread that makes the change.
    ObserverToken addObserver(std::string_view key, Observer observer);
    /// A call that is under way on another thread goes on.
    void removeObserver(ObserverToken token);

    /// Tells observers of `key` that it is about to change.
    void willChangeValue(std::string_view key);
    void didChangeValue(std::string_view key); ///< tells observers of `key` that it has changed

private:
    friend OperationQueue;
    struct State;
    /// The operation's state, which shares the operation.
    static std::shared_ptr<OperationState> shared(const std::shared_ptr<Operation>& operation);

    std::unique_ptr<State> state_;
};

} // namespace Tessel
