#pragma once

#include "Tessel/CaldavLibrary/MRVClient.h"
#include "Tessel/Session/Exchange/Answer.h"
#include "Tessel/Session/Exchange/SessionSettings.h"
#include "Tessel/Session/Outcome/PendingCall.h"

#include <atomic>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

namespace Tessel {

/// The Content-Type of what asks for properties or sets them (RFC 4918, 8.2).
inline constexpr const char* davType = "application/xml; charset=utf-8";

/// A request as a call states it.
struct Request {
    std::string method;
    std::string url; ///< absolute, or a path on the account's server
    std::vector<std::pair<std::string, std::string>> fields = {};
    std::string body = {};
    std::string what; ///< what cannot be done if it fails, for the reason
};

/// What all calls of a session share: who asks, where credentials may go, how long to wait, and the
/// queues: one for exchanges, a few at a time, and a serial one for everything that is done with
/// their answers, so that calls need no locks; beside it one that only reads long answers.
class Channel final : public std::enable_shared_from_this<Channel> {
public:
    using Next = std::function<void(Result<Answer>)>;

    Channel(std::shared_ptr<MRVAuthDelegate> auth, std::vector<Origin> origins,
        SessionSettings settings);

    const SessionSettings& settings() const { return settings_; }
    const Origin& origin() const { return origins_.front(); }

    /// A call that is cancelled when the session goes.
    template <class T> std::shared_ptr<PendingCall<T>> begin(Continuation<T> continuation)
    {
        auto call = std::make_shared<PendingCall<T>>(executor(), std::move(continuation));
        keep(call);
        return call;
    }

    /// Runs a step of a call on the serial queue; steps of a call that has ended are left out.
    void step(std::shared_ptr<CallState> call, std::function<void()> work);

    /// Sends a request for a call, and has `next` run as a step with what became of it. A 401 asks
    /// the host for a fresh credential first, where it can give one.
    void send(Request request, const std::shared_ptr<CallState>& call, Next next);

    /// The same for answers that take long to read: `read` makes of one what `next` is given,
    /// beside the steps, one answer at a time. The answer is gone by then.
    template <class T>
    void sendAndRead(Request request, const std::shared_ptr<CallState>& call,
        std::function<Result<T>(const Answer&)> read, std::function<void(Result<T>)> next)
    {
        exchange(std::move(request), call,
            [self = shared_from_this(), call, read = std::move(read), next = std::move(next)](
                Result<Answer> result) {
                self->run(*self->readings_, call,
                    [self, call, read, next, result = std::move(result)]() mutable {
                        const auto made = std::make_shared<Result<T>>(
                            result ? read(result.value()) : Result<T>(result.failure()));
                        result = Answer {};
                        self->step(call, [next, made] { next(std::move(*made)); });
                    });
            });
    }

    /// The absolute URL of a place on the account's server.
    std::string absolute(const std::string& place) const;

    /// Whether requests may go to the URL: https or http as allowed, on one of the origins.
    bool mayAsk(const std::string& url) const;

    /// Cancels all calls.
    void close();

private:
    Executor executor();
    void keep(const std::shared_ptr<CallState>& call);
    void run(OperationQueue& queue, std::shared_ptr<CallState> call, std::function<void()> work);
    void exchange(Request request, const std::shared_ptr<CallState>& call, Next settled);
    void sendOnce(const std::shared_ptr<const Request>& request,
        const std::shared_ptr<CallState>& call, Next next);
    void renew(std::function<void(bool)> then);
    void renewed(bool isFresh);
    Result<Answer> judged(Result<Answer> result, const Request& request) const;

    const std::shared_ptr<MRVAuthDelegate> auth_;
    const std::vector<Origin> origins_;
    const SessionSettings settings_;
    const std::shared_ptr<MRVClient> client_;
    OperationQueue exchanges_;
    const std::shared_ptr<OperationQueue> steps_;
    const std::shared_ptr<OperationQueue> readings_;

    std::atomic<int> credential_ {0}; ///< how often it was renewed
    std::mutex mutex_;
    std::unordered_map<CallState*, std::weak_ptr<CallState>> live_;
    std::vector<std::function<void(bool)>> waitForCredential_;
};

} // namespace Tessel
