#pragma once

#include "Tessel/CaldavLibrary/Operation/MRVOperation.h"
#include "Tessel/Session/Exchange/Answer.h"
#include "Tessel/Session/Outcome/Result.h"

#include <atomic>
#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace Tessel {

class ExchangeTrace;

/// One authorised request of any method, and its answer: what every call of a session is made of,
/// and what a host sends its own requests with, by `Session::send` or on a queue of its own.
///
/// `completion` is called exactly once: with the answer, whatever its status, or with why there is
/// none. Nothing that comes from the server stops the process. It is called on the transport's
/// callback thread; on a worker thread where nothing was sent; and on the thread of `cancel()` or
/// of a timer where it ends early. An exchange that was never queued never ends.
///
/// `cancel()` ends it at once, also when it has started, and stops its transfer where the transport
/// can (`MNetworkManager::cancel`); so does a deadline. The server may carry it out all the same.
class TESSEL_EXPORT Exchange final : public MRVOperation {
public:
    using Completion = std::function<void(Result<Answer>)>; ///< the answer, or why there is none

    /// `client` brings the account and the credentials; it must not be null.
    Exchange(std::shared_ptr<MRVClient> client, URLRequest request, Completion completion);
    ~Exchange() override;

    /// What cannot be done if this fails, for the reason: "The calendar could not be created".
    std::string what = "The request failed";
    /// How long nothing may move: the credential within this time, then the transport by its
    /// `URLRequest::timeoutInterval`, which this replaces.
    std::chrono::milliseconds patience {60'000};
    /// How long the whole may take from its start; no limit when absent.
    std::optional<std::chrono::milliseconds> limit = {};

    /// Whether a redirect may be followed to there; the redirect is the answer where it may not.
    /// One that turns a request that changes something into a GET (303) is never followed.
    std::function<bool(const std::string& url)> mayGo = {};

    void start() override; ///< begins to count `limit`
    void main() override; ///< asks for the credential and sends

private:
    struct Deadlines;
    struct Transfer;

    void sendAuthorized(MRVAuthDelegate& authority);
    void timeOut(const std::string& reason, bool mayBeSent);
    void endEarly(Failure failure);
    void end(Result<Answer> result);
    Failure failure(FailureKind kind, const std::string& reason) const;

    URLRequest request_;
    Completion completion_;
    std::unique_ptr<Deadlines> deadlines_;
    std::shared_ptr<Transfer> transfer_;
    std::unique_ptr<ExchangeTrace> trace_;
    std::atomic<bool> hasEnded_ {false};
    std::atomic<bool> isAuthorized_ {false};
    std::atomic<bool> isSigned_ {true};
};

} // namespace Tessel
