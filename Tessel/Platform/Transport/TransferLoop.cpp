#include "Tessel/Platform/Transport/TransferLoop.h"

#include "Tessel/Platform/Foundation/Base/Limits.h"
#include "Tessel/Platform/Foundation/Operations/LibraryThread.h"
#include "Tessel/Platform/Transport/MNetworkError.h"

#include <openssl/crypto.h>

#include <algorithm>
#include <cstdlib>

namespace Tessel {

namespace {

using namespace std::chrono_literals;

// How long the exit of the process waits for a completion that is still at work.
constexpr auto longestWaitAtExit = 500ms;

CURLM* makeMultiHandle()
{
    // OpenSSL would clean up at exit, also while the thread that makes this loop is still setting
    // it up, which crashes. One that the host has set up before is cleaned up after the workers
    // have ended.
    OPENSSL_init_crypto(OPENSSL_INIT_NO_ATEXIT, nullptr);
    curl_global_init(CURL_GLOBAL_ALL);
    auto* const multi = curl_multi_init();
    if (!multi) throw std::bad_alloc();
    // By itself libcurl keeps four per exchange under way, and so closes most of them in a lull.
    curl_multi_setopt(multi, CURLMOPT_MAXCONNECTS, Limits::keptConnections);
    return multi;
}

} // namespace

TransferLoop& TransferLoop::shared()
{
    static auto& loop = *new TransferLoop;
    return loop;
}

TransferLoop::TransferLoop()
    : multi_(makeMultiHandle())
{
    // Registered after libcurl has been set up, and its TLS library at the latest then: should that
    // clean up, the thread has ended before.
    std::atexit([] { shared().stop(); });
    thread_ = LibraryThread::start([this] { run(); });
}

void TransferLoop::submit(std::unique_ptr<SentTask> exchange)
{
    bool mustWake = false;
    {
        const std::lock_guard lock(mutex_);
        submitted_.push_back(std::move(exchange));
        mustWake = std::exchange(asleep_, false);
    }
    if (mustWake) curl_multi_wakeup(multi_);
}

void TransferLoop::cancel(int number)
{
    bool mustWake = false;
    {
        const std::lock_guard lock(mutex_);
        cancelled_.insert(number);
        mustWake = std::exchange(asleep_, false);
    }
    if (mustWake) curl_multi_wakeup(multi_);
}

void TransferLoop::stop()
{
    std::unique_lock lock(mutex_);
    stopping_ = true;
    // A completion that exits the process must not wait for itself.
    if (std::this_thread::get_id() == thread_.get_id()) return;
    curl_multi_wakeup(multi_);
    if (!ended_.wait_for(lock, longestWaitAtExit, [this] { return hasEnded_; })) return;
    lock.unlock();
    thread_.join();
}

bool TransferLoop::isStopping()
{
    const std::lock_guard lock(mutex_);
    return stopping_;
}

void TransferLoop::run()
{
    while (!isStopping()) {
        takeSubmitted();
        startWaiting();
        int running = 0;
        curl_multi_perform(multi_, &running);
        finishCompleted();
        finishStalled();
        // What takes the place of the finished is sent before anything is waited for.
        if (!startWaiting()) sleep();
    }
    const std::lock_guard lock(mutex_);
    hasEnded_ = true;
    ended_.notify_all();
}

void TransferLoop::takeSubmitted()
{
    std::vector<std::unique_ptr<SentTask>> submitted;
    std::unordered_set<int> cancelled;
    {
        // Together: a task is submitted before it is cancelled.
        const std::lock_guard lock(mutex_);
        submitted.swap(submitted_);
        cancelled.swap(cancelled_);
    }
    for (auto& exchange : submitted)
        waiting_.add(std::move(exchange));
    if (!cancelled.empty()) endCancelled(cancelled);
}

void TransferLoop::endCancelled(const std::unordered_set<int>& numbers)
{
    auto ended = waiting_.remove(numbers);
    std::vector<Transfer*> stopped;
    for (const auto& transfer : active_) {
        if (numbers.contains(transfer->number())) stopped.push_back(transfer.get());
    }
    for (auto* const transfer : stopped)
        ended.push_back(release(transfer, false));
    for (const auto& exchange : ended) {
        if (isStopping()) return;
        exchange->fail(makeNetworkError(MNetworkErrorCode::cancelled, "The task was cancelled."));
    }
}

bool TransferLoop::startWaiting()
{
    bool hasStarted = false;
    for (; auto exchange = waiting_.next(); hasStarted = true)
        start(std::move(exchange));
    return hasStarted;
}

void TransferLoop::start(std::unique_ptr<SentTask> exchange)
{
    if (idle_.empty()) idle_.push_back(std::make_unique<Transfer>());
    active_.push_back(std::move(idle_.back()));
    idle_.pop_back();

    auto* const transfer = active_.back().get();
    const bool isFirst = exchange->redirects == 0;
    const auto didStart = isFirst ? exchange->task.requestDidStartHandler : nullptr;
    if (auto error = transfer->prepare(std::move(exchange)))
        return finish(transfer, std::move(error));
    if (didStart) didStart();
    if (const auto code = curl_multi_add_handle(multi_, transfer->handle())) {
        finish(transfer, makeNetworkError(MNetworkErrorCode::other, curl_multi_strerror(code)));
    }
}

void TransferLoop::finishCompleted()
{
    int left = 0;
    while (const auto* message = curl_multi_info_read(multi_, &left)) {
        if (message->msg != CURLMSG_DONE) continue;
        Transfer* transfer = nullptr;
        curl_easy_getinfo(message->easy_handle, CURLINFO_PRIVATE, &transfer);
        if (isStopping()) return;
        finish(transfer, transfer->failure(message->data.result));
    }
}

void TransferLoop::finishStalled()
{
    const auto now = Transfer::Clock::now();
    std::vector<Transfer*> stalled;
    for (const auto& transfer : active_) {
        if (now >= transfer->nextCheck() && transfer->isStalled(now))
            stalled.push_back(transfer.get());
    }
    for (auto* const transfer : stalled) {
        if (isStopping()) return;
        finish(transfer, transfer->failure(CURLE_OPERATION_TIMEDOUT));
    }
}

void TransferLoop::sleep()
{
    auto wakeAt = Transfer::Clock::now() + 1h;
    for (const auto& transfer : active_)
        wakeAt = std::min(wakeAt, transfer->nextCheck());
    {
        const std::lock_guard lock(mutex_);
        if (stopping_ || !submitted_.empty() || !cancelled_.empty()) return;
        asleep_ = true;
    }
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(wakeAt - Transfer::Clock::now());
    curl_multi_poll(multi_, nullptr, 0, static_cast<int>(std::max(left, 0ms).count()), nullptr);
    const std::lock_guard lock(mutex_);
    asleep_ = false;
}

void TransferLoop::finish(Transfer* transfer, std::optional<Error> error)
{
    if (error) return release(transfer, false)->fail(*error);
    auto response = transfer->takeResponse();
    auto body = transfer->takeBody();
    auto exchange = release(transfer, true);
    if (exchange->settle(std::move(response), std::move(body))) waiting_.add(std::move(exchange));
}

std::unique_ptr<SentTask> TransferLoop::release(Transfer* transfer, bool hasAnswered)
{
    curl_multi_remove_handle(multi_, transfer->handle());
    auto exchange = transfer->release();
    waiting_.finished(*exchange, hasAnswered);
    const auto found = std::find_if(
        active_.begin(), active_.end(), [&](const auto& each) { return each.get() == transfer; });
    // libcurl counts on what it has tried in vain, and so gives up earlier on what comes next.
    if (hasAnswered) idle_.push_back(std::move(*found));
    *found = std::move(active_.back());
    active_.pop_back();
    return exchange;
}

} // namespace Tessel
