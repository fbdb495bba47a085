#pragma once

#include "Tessel/Platform/Foundation/Operations/Operation.h"
#include "Tessel/Session/Outcome/Continuation.h"

#include <atomic>
#include <condition_variable>
#include <cstddef>
#include <functional>
#include <memory>
#include <mutex>
#include <vector>

namespace Tessel {

/// What handle and work of a call share, whatever it gives. It ends once; who comes later is
/// ignored. Its members may be called from any thread.
class CallState : public std::enable_shared_from_this<CallState> {
public:
    /// Every call tells its host through `executor`.
    explicit CallState(Executor executor);
    virtual ~CallState();
    CallState(const CallState&) = delete;
    CallState& operator=(const CallState&) = delete;

    virtual void fail(Failure failure) = 0;
    void cancel();

    bool isDone() const;
    /// False on a thread of the library.
    bool waitUntilDone() const;

    /// A request that changes something is under way: a call that is cancelled meanwhile does not
    /// know what the server does.
    void beginWrite() { ++writes_; }
    /// It has ended. What it may have done stays done, whenever the call is cancelled.
    void endWrite(bool mayBeDone)
    {
        if (mayBeDone) hasWritten_ = true;
        --writes_;
    }

    /// Has the operation cancelled when the call ends before it.
    void add(const std::shared_ptr<Operation>& operation);
    /// Told once the call has ended, on the thread that ended it; at once when it has.
    void whenDone(std::function<void()> told);
    /// Runs what tells the host of progress, unless the call has ended by then. Whoever waits for
    /// the call waits for what is being told, too.
    void report(std::function<void()> tell);

protected:
    /// The first time: has the result stored, and then the host told, if `tell` is not empty.
    void finish(const std::function<void()>& store, std::function<void()> tell);

private:
    class Telling;

    const Executor executor_;
    mutable std::mutex mutex_;
    mutable std::condition_variable ended_;
    std::vector<std::weak_ptr<Operation>> operations_;
    std::size_t pruneAt_ = 16;
    std::atomic<int> writes_ {0}; ///< under way
    std::atomic<bool> hasWritten_ {false};
    std::vector<std::function<void()>> told_;
    int telling_ = 0; ///< reports that run
    bool done_ = false;
};

} // namespace Tessel
