#include "Tessel/Session/Exchange/Channel.h"

#include "Tessel/Platform/Foundation/Web/URL.h"
#include "Tessel/Session/Exchange/AnswerFailure.h"
#include "Tessel/Session/Exchange/Exchange.h"
#include "Tessel/Session/Exchange/Href.h"
#include "Tessel/Session/Exchange/Timer.h"

#include <algorithm>
#include <atomic>

namespace Tessel {

namespace {

std::string nameIn(std::string_view url)
{
    auto path = normalPath(url.substr(0, url.find_first_of("?#")));
    const auto end = path.size() > 1 ? path.rfind('/', path.size() - 2) : path.npos;
    return path.substr(end == path.npos ? 0 : end + 1);
}

/// Whether the server may have done what it was asked for.
bool mayBeDone(const Result<Answer>& result)
{
    if (!result) return result.failure().isUncertain;
    const auto kind = kindOfStatus(result.value().status);
    return result.value().isSuccess() || kind == FailureKind::serverFault;
}

} // namespace

Channel::Channel(
    std::shared_ptr<MRVAuthDelegate> auth, std::vector<Origin> origins, SessionSettings settings)
    : auth_(std::move(auth))
    , origins_(std::move(origins))
    , settings_(std::move(settings))
    , client_(std::make_shared<MRVClient>(
          std::make_shared<MRVAccount>(MRVAccount {.identifier = "session"}), auth_))
    , steps_(std::make_shared<OperationQueue>())
    , readings_(std::make_shared<OperationQueue>())
{
    exchanges_.setMaxConcurrentOperationCount(
        std::ptrdiff_t(std::clamp<std::size_t>(settings_.exchangesAtOnce, 1, 64)));
    steps_->setMaxConcurrentOperationCount(1);
    readings_->setMaxConcurrentOperationCount(1);
}

Executor Channel::executor()
{
    if (settings_.executor) return settings_.executor;
    return [steps = steps_](std::function<void()> work) { steps->addOperation(std::move(work)); };
}

void Channel::keep(const std::shared_ptr<CallState>& call)
{
    {
        const std::lock_guard lock(mutex_);
        live_.emplace(call.get(), call);
    }
    call->whenDone([weak = weak_from_this(), key = call.get()] {
        const auto self = weak.lock();
        if (!self) return;
        const std::lock_guard lock(self->mutex_);
        self->live_.erase(key);
    });
}

void Channel::close()
{
    std::vector<std::shared_ptr<CallState>> calls;
    {
        const std::lock_guard lock(mutex_);
        for (const auto& [key, weak] : live_) {
            if (auto call = weak.lock()) calls.push_back(std::move(call));
        }
    }
    for (const auto& call : calls)
        call->cancel();
}

void Channel::step(std::shared_ptr<CallState> call, std::function<void()> work)
{
    run(*steps_, std::move(call), std::move(work));
}

void Channel::run(
    OperationQueue& queue, std::shared_ptr<CallState> call, std::function<void()> work)
{
    queue.addOperation([call = std::move(call), work = std::move(work)] {
        if (!call->isDone()) work();
    });
}

std::string Channel::absolute(const std::string& place) const
{
    return place.starts_with('/') ? baseOf(origins_.front()) + place : place;
}

bool Channel::mayAsk(const std::string& url) const
{
    const auto origin = Origin::of(url);
    if (!origin || std::find(origins_.begin(), origins_.end(), *origin) == origins_.end())
        return false;
    return settings_.allowsPlainHTTP || origin->text().starts_with("https:");
}

void Channel::send(Request request, const std::shared_ptr<CallState>& call, Next next)
{
    exchange(std::move(request), call,
        [self = shared_from_this(), call, next = std::move(next)](Result<Answer> result) {
            self->step(
                call, [next, result = std::move(result)]() mutable { next(std::move(result)); });
        });
}

void Channel::exchange(Request request, const std::shared_ptr<CallState>& call, Next next)
{
    const auto shared = std::make_shared<const Request>(std::move(request));
    const auto settled
        = [self = shared_from_this(), shared, next = std::move(next)](
              Result<Answer> result) { next(self->judged(std::move(result), *shared)); };
    const auto used = credential_.load();
    sendOnce(shared, call,
        [self = shared_from_this(), shared, call, settled, used](Result<Answer> result) {
            if (!result || result.value().status != 401 || call->isDone())
                return settled(std::move(result));
            // No credential goes along with a redirect: it is asked for where that leads.
            const auto& url = result.value().url;
            if (Origin::of(url) != Origin::of(self->absolute(shared->url)) && self->mayAsk(url)) {
                auto there = *shared;
                there.url = url;
                return self->sendOnce(
                    std::make_shared<const Request>(std::move(there)), call, settled);
            }
            if (!self->settings_.freshCredential) return settled(std::move(result));
            const auto again = [self, shared, call, settled, result](bool isFresh) {
                if (!isFresh) return settled(result);
                self->sendOnce(shared, call, settled);
            };
            // One that was signed before the last renewal needs no other.
            if (self->credential_ != used) return again(true);
            self->renew(again);
        });
}

void Channel::sendOnce(const std::shared_ptr<const Request>& request,
    const std::shared_ptr<CallState>& call, Next next)
{
    const auto refuse = [&](FailureKind kind, const std::string& reason) {
        next(Failure {.kind = kind,
            .reason = request->what + ": " + reason,
            .method = request->method,
            .url = withoutUserInfo(request->url)});
    };
    const auto url = encodedURL(absolute(request->url));
    if (!url) {
        return refuse(
            FailureKind::malformed, "the server names an address that is none: " + request->url);
    }
    if (!mayAsk(*url)) {
        return refuse(FailureKind::notSent,
            "the address " + withoutUserInfo(*url)
                + " is not of the account's server, so nothing was sent there. If you trust it, "
                  "allow its origin.");
    }
    URLRequest sent(*url);
    sent.method = request->method;
    for (const auto& [name, value] : request->fields)
        sent.headers.set(name, value);
    sent.body = Data(request->body);
    const bool isWrite = changesSomething(request->method);
    if (isWrite) call->beginWrite();
    const auto exchange = std::make_shared<Exchange>(
        client_, std::move(sent), [call, isWrite, next = std::move(next)](Result<Answer> result) {
            if (isWrite) call->endWrite(mayBeDone(result));
            next(std::move(result));
        });
    exchange->mayGo = [weak = weak_from_this(), isWrite, from = *url](const std::string& to) {
        const auto self = weak.lock();
        // What is elsewhere under another name is another thing, such as the calendar of an event
        // that is to be removed.
        return self && self->mayAsk(to) && (!isWrite || nameIn(to) == nameIn(from));
    };
    exchange->what = request->what;
    exchange->patience = settings_.patience;
    exchange->limit = settings_.limit;
    call->add(exchange);
    exchanges_.addOperation(exchange);
}

Result<Answer> Channel::judged(Result<Answer> result, const Request& request) const
{
    if (!result) return result;
    const auto& answer = result.value();
    const auto location = answer.headers.value("Location");
    const bool isRedirect = location && answer.status >= 300 && answer.status < 400;
    const auto target = isRedirect ? resolved(answer.url, *location) : answer.url;
    const bool isElsewhere = !mayAsk(target) || !mayAsk(answer.url);
    const bool isOther = isRedirect && changesSomething(request.method);
    if (!isElsewhere && !isOther) return result;
    const auto& where = mayAsk(answer.url) ? target : answer.url;
    return Failure {.kind = FailureKind::refused,
        .reason = request.what + ": the server sends us to " + withoutUserInfo(where)
            + (isElsewhere
                    ? ", which is not the account's server. If you trust it, allow its origin."
                    : ", where something else is. Nothing was changed."),
        .method = request.method,
        .url = withoutUserInfo(where),
        .status = answer.status};
}

void Channel::renew(std::function<void(bool)> then)
{
    {
        const std::lock_guard lock(mutex_);
        waitForCredential_.push_back(std::move(then));
        if (waitForCredential_.size() > 1) return;
    }
    const auto isFirst = std::make_shared<std::atomic<bool>>(true);
    const auto answer = [self = shared_from_this(), isFirst](bool isFresh) {
        if (isFirst->exchange(false)) self->renewed(isFresh);
    };
    // A host that never says leaves the refusal as it is.
    const auto timer = Timer::shared().after(settings_.patience, [answer] { answer(false); });
    executor()([answer, timer, ask = settings_.freshCredential] {
        ask([answer, timer](bool isFresh) {
            Timer::shared().cancel(timer);
            answer(isFresh);
        });
    });
}

void Channel::renewed(bool isFresh)
{
    std::vector<std::function<void(bool)>> waiting;
    {
        const std::lock_guard lock(mutex_);
        waiting.swap(waitForCredential_);
    }
    if (isFresh) ++credential_;
    for (const auto& then : waiting)
        then(isFresh);
}

} // namespace Tessel
