#pragma once

#include "Tessel/Platform/Transport/Transfer.h"
#include "Tessel/Platform/Transport/WaitingExchanges.h"

#include <curl/curl.h>

#include <condition_variable>
#include <memory>
#include <mutex>
#include <optional>
#include <thread>
#include <unordered_set>
#include <vector>

namespace Tessel {

/// The one thread of the process on which exchanges run and call back. It sleeps until something
/// arrives, and ends when the process exits.
class TransferLoop {
public:
    /// Started by the first call, never destroyed.
    static TransferLoop& shared();

    /// Takes an exchange over, from any thread.
    void submit(std::unique_ptr<SentTask> exchange);
    /// Ends the task of this number, unless it has ended, from any thread.
    void cancel(int number);

private:
    TransferLoop();

    void stop();
    bool isStopping();

    void run();
    void takeSubmitted();
    void endCancelled(const std::unordered_set<int>& numbers);
    bool startWaiting(); ///< whether anything has started
    void start(std::unique_ptr<SentTask> exchange);
    void finishCompleted();
    void finishStalled();
    void sleep();

    void finish(Transfer* transfer, std::optional<Error> error);
    std::unique_ptr<SentTask> release(Transfer* transfer, bool hasAnswered);

    CURLM* const multi_;

    // Shared with the threads that send.
    std::mutex mutex_;
    std::condition_variable ended_;
    std::vector<std::unique_ptr<SentTask>> submitted_;
    std::unordered_set<int> cancelled_; ///< numbers of tasks
    bool asleep_ = false;
    bool stopping_ = false;
    bool hasEnded_ = false;

    // Used on the loop's thread only.
    WaitingExchanges waiting_;
    std::vector<std::unique_ptr<Transfer>> active_;
    std::vector<std::unique_ptr<Transfer>> idle_;

    std::thread thread_;
};

} // namespace Tessel
