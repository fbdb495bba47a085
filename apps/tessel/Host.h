#pragma once

#include "apps/tessel/AccountStore.h"
#include "apps/tessel/AwaitedAnswer.h"
#include "apps/tessel/ExchangeLog.h"
#include "apps/tessel/Options.h"
#include "apps/tessel/Output.h"
#include "apps/tessel/StepFailed.h"

#include <Tessel/Tessel.h>

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace Tessel::App {

/// The application around the library for one command on one account: its transport, store and
/// output, and the deadline that the library leaves to its host.
class Host {
public:
    /// Sends through `network`; becomes the transport of the process.
    Host(const Options& options, const std::string& password,
        std::shared_ptr<MNetworkManager> network);
    ~Host();
    Host(const Host&) = delete;
    Host& operator=(const Host&) = delete;

    const Output& output() const { return output_; }
    AccountStore& store() { return store_; }
    const std::shared_ptr<ExchangeLog>& log() const { return log_; }

    /// Asks the server for the account's locations and keeps them.
    std::shared_ptr<MRVAccount> discover();
    /// The account as it is held, or discovered.
    std::shared_ptr<MRVAccount> account();
    std::shared_ptr<MRVClient> makeClient();

    /// Where a resource of the account is.
    std::string url(const std::string& href);
    struct Resource {
        std::string text;
        std::string eTag;
    };
    /// A resource whatever the library makes of it; none unless the server answers 200.
    std::optional<Resource> get(const std::string& href);

    /// The calendars as the server lists them now.
    std::vector<std::shared_ptr<MRVCalendar>> listCalendars();
    /// The one of these calendars with that href or display name; throws unless there is one.
    static std::shared_ptr<MRVCalendar> find(
        const std::vector<std::shared_ptr<MRVCalendar>>& calendars, const std::string& nameOrHref);
    std::shared_ptr<MRVCalendar> calendar(const std::string& nameOrHref);

    template <class... Arguments> AwaitedAnswer<Arguments...> makeAnswer() const
    {
        return AwaitedAnswer<Arguments...>(log_);
    }
    /// Starts a call and waits for its answer until the command's deadline. Throws `StepTimedOut`
    /// when it comes too late, and `StepFailed` when none can come any more.
    template <class... Arguments>
    std::tuple<Arguments...> await(const std::string& step,
        const AwaitedAnswer<Arguments...>& answer, const std::function<void()>& start)
    {
        waitFor(
            step, [&](const auto&) { return answer.value().has_value(); }, start);
        return *answer.value();
    }
    void waitFor(const std::string& step, const ExchangeLog::Condition& condition,
        const std::function<void()>& start);
    /// Starts a call that sends one request with `method`, and waits until that is over. Throws
    /// `StepFailed` unless the server answered with success, whatever the call makes of it: some
    /// calls take a refusal for success, others a success such as 200 for a refusal.
    void write(
        const std::string& step, const std::string& method, const std::function<void()>& start);
    template <class Failure = StepFailed>
    [[noreturn]] void fail(const std::string& step, const std::string& why) const
    {
        const auto last = log_->last();
        throw Failure(step, why, last ? std::optional(last->description()) : std::nullopt);
    }

    /// What the server said last, such as "PROPFIND 207".
    std::string lastAnswer() const;
    std::string lastWord() const { return " (" + lastAnswer() + ")"; } ///< for the end of a line

private:
    std::string identifier() const;

    const Options options_;
    const Output output_;
    const std::shared_ptr<ExchangeLog> log_ = std::make_shared<ExchangeLog>();
    const std::shared_ptr<PasswordAuth> auth_;
    const ExchangeLog::Clock::time_point deadline_;
    AccountStore store_;
    std::shared_ptr<MRVAccount> account_;
};

} // namespace Tessel::App
