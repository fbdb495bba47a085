#include "Tessel/Session/Outcome/CallState.h"

#include "Tessel/Platform/Foundation/Operations/LibraryThread.h"

namespace Tessel {

namespace {
/// The call that tells of progress on this thread.
thread_local const CallState* tellingHere = nullptr;
} // namespace

/// While the host is told of progress; not at all once the call has ended.
class CallState::Telling {
public:
    explicit Telling(CallState& call)
        : call_(call)
        , outer_(tellingHere)
    {
        const std::lock_guard lock(call_.mutex_);
        mayTell_ = !call_.done_;
        if (!mayTell_) return;
        ++call_.telling_;
        tellingHere = &call_;
    }
    ~Telling()
    {
        if (!mayTell_) return;
        tellingHere = outer_;
        {
            const std::lock_guard lock(call_.mutex_);
            --call_.telling_;
        }
        call_.ended_.notify_all();
    }
    Telling(const Telling&) = delete;
    Telling& operator=(const Telling&) = delete;

    bool mayTell() const { return mayTell_; }

private:
    CallState& call_;
    const CallState* const outer_;
    bool mayTell_ = false;
};

CallState::CallState(Executor executor)
    : executor_(std::move(executor))
{
}

CallState::~CallState() = default;

void CallState::cancel()
{
    fail({.kind = FailureKind::cancelled,
        .reason = "The call was cancelled.",
        .isUncertain = writes_ > 0 || hasWritten_});
}

bool CallState::isDone() const
{
    const std::lock_guard lock(mutex_);
    return done_;
}

bool CallState::waitUntilDone() const
{
    std::unique_lock lock(mutex_);
    if (!done_ && LibraryThread::isCurrent()) return false;
    // A host that waits while it is told would wait for itself.
    const int ours = tellingHere == this ? 1 : 0;
    ended_.wait(lock, [&] { return done_ && telling_ <= ours; });
    return true;
}

void CallState::add(const std::shared_ptr<Operation>& operation)
{
    {
        const std::lock_guard lock(mutex_);
        if (!done_) {
            // A long call has many operations, of which few are on their way.
            if (operations_.size() >= pruneAt_) {
                std::erase_if(operations_, [](const auto& each) { return each.expired(); });
                pruneAt_ = 2 * operations_.size() + 16;
            }
            operations_.push_back(operation);
            return;
        }
    }
    operation->cancel();
}

void CallState::whenDone(std::function<void()> told)
{
    {
        const std::lock_guard lock(mutex_);
        if (!done_) {
            told_.push_back(std::move(told));
            return;
        }
    }
    told();
}

void CallState::report(std::function<void()> tell)
{
    executor_([self = shared_from_this(), tell = std::move(tell)] {
        const Telling telling(*self);
        if (telling.mayTell()) tell();
    });
}

void CallState::finish(const std::function<void()>& store, std::function<void()> tell)
{
    std::vector<std::weak_ptr<Operation>> operations;
    std::vector<std::function<void()>> told;
    {
        const std::lock_guard lock(mutex_);
        if (done_) return;
        store();
        done_ = true;
        operations.swap(operations_);
        told.swap(told_);
    }
    ended_.notify_all();
    for (const auto& each : operations) {
        if (const auto operation = each.lock()) operation->cancel();
    }
    for (const auto& each : told)
        each();
    if (tell) executor_(std::move(tell));
}

} // namespace Tessel
