#include "Tessel/Session/Exchange/Exchange.h"

#include "Tessel/CaldavLibrary/Extensions/MRVHeaderAuthorization.h"
#include "Tessel/Platform/Foundation/Operations/LibraryThread.h"
#include "Tessel/Platform/Foundation/Web/HTTPURLResponse.h"
#include "Tessel/Platform/Foundation/Web/URL.h"
#include "Tessel/Platform/Transport/MNetworkManager.h"
#include "Tessel/Session/Exchange/AnswerFailure.h"
#include "Tessel/Session/Exchange/ExchangeTrace.h"
#include "Tessel/Session/Exchange/Timer.h"

#include <mutex>
#include <utility>

namespace Tessel {

namespace {

/// Passes the question on to the host's delegate, and its first answer back.
class AskedOnce final : public MRVAuthDelegate {
public:
    AskedOnce(MRVAuthDelegate& asked, std::function<bool(bool isSigned)> isFirst)
        : asked_(asked)
        , isFirst_(std::move(isFirst))
    {
    }

    void authorize(const URLRequest& request, bool isGoogle,
        const std::shared_ptr<MRVAccount>& account,
        std::function<void(URLRequest)> completion) override
    {
        asked_.authorize(request, isGoogle, account,
            [isFirst = isFirst_, completion = std::move(completion),
                unsignedFields = request.headers.fields().size()](URLRequest authorized) {
                const auto& headers = authorized.headers;
                const bool isSigned = headers.value(MRVHeaderAuthorization)
                    || headers.fields().size() > unsignedFields;
                if (isFirst(isSigned)) completion(std::move(authorized));
            });
    }

private:
    MRVAuthDelegate& asked_;
    std::function<bool(bool)> isFirst_;
};

std::string seconds(std::chrono::milliseconds time)
{
    const auto tenths = time.count() / 100;
    auto text = std::to_string(tenths / 10);
    if (tenths % 10) text.append(".").append(std::to_string(tenths % 10));
    return text + " s";
}

} // namespace

/// Timers of one exchange; they are cancelled with it.
struct Exchange::Deadlines {
    std::mutex mutex;
    std::optional<Timer::Token> authorization;
    std::optional<Timer::Token> whole;

    void cancel(std::optional<Timer::Token> Deadlines::*which)
    {
        std::optional<Timer::Token> token;
        {
            const std::lock_guard lock(mutex);
            token = std::exchange(this->*which, std::nullopt);
        }
        if (token) Timer::shared().cancel(*token);
    }
};

/// What the transport does for an exchange, until nobody waits for it any more. It lets go of the
/// transport then: one that never ends what it was told to cancel would hold itself by its tasks.
struct Exchange::Transfer {
    std::mutex mutex;
    std::shared_ptr<MNetworkManager> transport;
    int number = 0;
    bool isUnwanted = false;

    void begin(std::shared_ptr<MNetworkManager> by, int task)
    {
        {
            const std::lock_guard lock(mutex);
            if (!isUnwanted) {
                transport = std::move(by);
                number = task;
                return;
            }
        }
        by->cancel(task);
    }
    void stop()
    {
        std::shared_ptr<MNetworkManager> told;
        {
            const std::lock_guard lock(mutex);
            isUnwanted = true;
            told = std::move(transport);
        }
        if (told) told->cancel(number);
    }
};

Exchange::Exchange(std::shared_ptr<MRVClient> sender, URLRequest request, Completion completion)
    : request_(std::move(request))
    , completion_(std::move(completion))
    , deadlines_(std::make_unique<Deadlines>())
    , transfer_(std::make_shared<Transfer>())
    , trace_(std::make_unique<ExchangeTrace>())
{
    client = std::move(sender);
}

Exchange::~Exchange() = default;

void Exchange::start()
{
    trace_->began(request_);
    addObserver("isCancelled", [](Operation& operation, std::string_view, Change change) {
        auto& self = static_cast<Exchange&>(operation);
        if (change == Change::did && self.isExecuting())
            self.endEarly(self.failure(FailureKind::cancelled, "it was cancelled"));
    });
    MRVOperation::start();
    if (!isCancelled()) return;
    // Cancelled before it began, or while it did.
    endEarly(failure(FailureKind::cancelled, "it was cancelled before it was sent"));
}

void Exchange::main()
{
    const auto authority = client->authDelegate();
    if (!authority) return end(failure(FailureKind::notSent, "the auth delegate is gone"));

    request_.timeoutInterval = patience;
    const auto weak = weakly(this);
    {
        const std::lock_guard lock(deadlines_->mutex);
        deadlines_->authorization = Timer::shared().after(patience, [weak, patience = patience] {
            if (const auto self = weak.lock())
                self->timeOut(
                    "the host's credential did not come within " + seconds(patience), false);
        });
        if (limit) {
            deadlines_->whole = Timer::shared().after(*limit, [weak, limit = *limit] {
                if (const auto self = weak.lock())
                    self->timeOut(
                        "there was no whole answer within " + seconds(limit), self->isAuthorized_);
            });
        }
    }
    sendAuthorized(*authority);
}

void Exchange::sendAuthorized(MRVAuthDelegate& authority)
{
    const auto weak = weakly(this);
    AskedOnce once(authority, [weak](bool isSigned) {
        const auto self = weak.lock();
        if (!self || self->hasEnded_ || self->isAuthorized_.exchange(true)) return false;
        self->isSigned_ = isSigned;
        self->deadlines_->cancel(&Deadlines::authorization);
        return true;
    });
    authorizeAndSend(
        request_, once, nullptr,
        [weak](const Data& data, const auto& response, const auto& error) {
            const auto self = weak.lock();
            if (!self) return;
            const auto& request = self->request_;
            if (error) {
                return self->end(failureOf(*error, request.method, request.url(), self->what));
            }
            const auto http = std::dynamic_pointer_cast<const HTTPURLResponse>(response);
            if (!http) {
                auto failure = self->failure(
                    FailureKind::malformed, "the transport brought no answer of HTTP");
                failure.isUncertain = changesSomething(self->request_.method);
                return self->end(std::move(failure));
            }
            self->end(Answer {
                request.method, http->url, http->statusCode, http->headers, data, self->isSigned_});
        },
        [method = request_.method, mayGo = mayGo](const URLRequest& next) {
            const bool isSame = next.method == method || !changesSomething(method);
            return isSame && (!mayGo || mayGo(next.url()));
        },
        [transfer = transfer_](
            const auto& transport, int number) { transfer->begin(transport, number); });
}

void Exchange::timeOut(const std::string& reason, bool mayBeSent)
{
    auto failure = this->failure(FailureKind::timedOut, reason);
    failure.isUncertain = mayBeSent && changesSomething(request_.method);
    endEarly(std::move(failure));
}

void Exchange::endEarly(Failure failure)
{
    const auto transfer = transfer_;
    end(std::move(failure));
    transfer->stop();
}

void Exchange::end(Result<Answer> result)
{
    if (hasEnded_.exchange(true)) return;
    const auto self = shared_from_this();
    deadlines_->cancel(&Deadlines::authorization);
    deadlines_->cancel(&Deadlines::whole);
    trace_->ended(result);
    // Let go before the operation counts as finished: it may hold what holds the operation.
    if (const auto tell = std::exchange(completion_, nullptr)) {
        const LibraryThread here;
        tell(std::move(result));
    }
    if (!isFinished()) setDone(true);
}

Failure Exchange::failure(FailureKind kind, const std::string& reason) const
{
    const auto url = withoutUserInfo(request_.url());
    return {
        .kind = kind,
        .reason = what + ": " + request_.method + " " + url + ": " + reason + ".",
        .method = request_.method,
        .url = url,
        .isUncertain
        = kind == FailureKind::cancelled && isAuthorized_ && changesSomething(request_.method),
    };
}

} // namespace Tessel
