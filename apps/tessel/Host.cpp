#include "apps/tessel/Host.h"

#include "apps/tessel/RecordingTransport.h"

#include <algorithm>

namespace Tessel::App {

namespace {

/// Without a scheme the library would find its requests' addresses only after a redirect.
std::string serverURL(const std::string& typed)
{
    return typed.find("://") == std::string::npos ? "https://" + typed : typed;
}

Origin origin(const std::string& server)
{
    const auto origin = Origin::ofServer(server);
    if (!origin) throw std::runtime_error("not the address of a server: " + server);
    return *origin;
}

std::shared_ptr<PasswordAuth> makeAuth(const Options& options, const std::string& password)
{
    std::vector<Origin> others;
    for (const auto& server : options.otherServers)
        others.push_back(origin(server));
    return std::make_shared<PasswordAuth>(
        origin(options.server), options.user, password, std::move(others));
}

} // namespace

Host::Host(
    const Options& options, const std::string& password, std::shared_ptr<MNetworkManager> network)
    : options_(options)
    , output_(options.json)
    , auth_(makeAuth(options, password))
    , deadline_(ExchangeLog::Clock::now() + std::chrono::seconds(options.timeoutSeconds))
    , store_(options.storeFile)
{
    MNetworkManager::setSharedInstance(
        std::make_shared<RecordingTransport>(std::move(network), log_));
    if (options.verbose) {
        Configuration::shared().setLogger(Plinth::makeDefaultLogger(Plinth::Level::debug));
    }
}

Host::~Host()
{
    MNetworkManager::setSharedInstance(nullptr);
}

std::string Host::identifier() const
{
    return options_.user + "@" + options_.server;
}

std::shared_ptr<MRVAccount> Host::discover()
{
    const auto fresh = std::make_shared<MRVAccount>(MRVAccount {
        .identifier = identifier(),
        .email = options_.email.empty() ? options_.user : options_.email,
        .serverURL = serverURL(options_.server),
    });
    const auto provider = std::make_shared<MRVAccountInfoProvider>(fresh, auth_);
    const auto answer = makeAnswer<std::shared_ptr<MRVAccount>>();
    try {
        await("discovery", answer, [&] { provider->getAccountInfo(answer); });
    } catch (const StepTimedOut&) {
        throw; // an answer may be on its way into the account
    } catch (const StepFailed&) {
        // Where the principal's answer carries the calendar home already, discovery ends there
        // without a word; what it has found is complete but for the supported methods.
        if (!fresh->calendarHomeURL) throw;
    }
    store_.save(*fresh);
    return account_ = fresh;
}

std::shared_ptr<MRVAccount> Host::account()
{
    if (!account_) account_ = store_.account(identifier());
    return account_ ? account_ : discover();
}

std::shared_ptr<MRVClient> Host::makeClient()
{
    return std::make_shared<MRVClient>(account(), auth_);
}

std::string Host::url(const std::string& href)
{
    if (href.starts_with("http")) return URLRequest(href).url();
    const auto& server = account()->serverURL;
    const auto length = server.size() - (server.ends_with('/') ? 1 : 0);
    return URLRequest(server.substr(0, length) + href).url();
}

std::optional<Host::Resource> Host::get(const std::string& href)
{
    const URLRequest request(url(href));
    const auto answer = makeAnswer<Data, std::shared_ptr<const URLResponse>,
        std::optional<std::string>, std::optional<Error>, int>();
    const auto send = [&answer](URLRequest authorized) {
        MNetworkManager::sharedInstance()->send(
            {.request = std::move(authorized), .completionHandler = answer});
    };
    const auto arguments = await(
        "fetching the resource", answer, [&] { auth_->authorize(request, false, account_, send); });
    const auto response = std::dynamic_pointer_cast<const HTTPURLResponse>(std::get<1>(arguments));
    if (!response || response->statusCode != 200) return std::nullopt;
    return Resource {
        std::string(std::get<0>(arguments).view()), response->headers.value("ETag").value_or("")};
}

std::vector<std::shared_ptr<MRVCalendar>> Host::listCalendars()
{
    const auto client = makeClient();
    using List = std::optional<std::vector<std::shared_ptr<MRVCalendar>>>;
    const auto answer = makeAnswer<List, std::optional<Error>>();
    const auto [list, error]
        = await("listing the calendars", answer, [&] { client->getCalendars(answer); });
    if (!list) fail("listing the calendars", "the answer is no listing");
    return *list;
}

std::shared_ptr<MRVCalendar> Host::find(
    const std::vector<std::shared_ptr<MRVCalendar>>& calendars, const std::string& nameOrHref)
{
    std::shared_ptr<MRVCalendar> found;
    for (const auto& calendar : calendars) {
        if (calendar->href == nameOrHref) return calendar;
        if (calendar->displayName != nameOrHref) continue;
        if (found) {
            throw std::runtime_error(
                "several calendars are called " + nameOrHref + "; name one by its href");
        }
        found = calendar;
    }
    if (!found) throw std::runtime_error("there is no calendar " + nameOrHref);
    return found;
}

std::shared_ptr<MRVCalendar> Host::calendar(const std::string& nameOrHref)
{
    return find(listCalendars(), nameOrHref);
}

void Host::waitFor(const std::string& step, const ExchangeLog::Condition& condition,
    const std::function<void()>& start)
{
    const auto first = log_->count();
    start();
    switch (log_->wait(condition, deadline_, first)) {
    case ExchangeLog::Outcome::met:
        return;
    case ExchangeLog::Outcome::silent:
        fail(step, "no answer will come");
    case ExchangeLog::Outcome::timedOut:
        fail<StepTimedOut>(
            step, "no answer within " + std::to_string(options_.timeoutSeconds) + " s");
    }
}

void Host::write(
    const std::string& step, const std::string& method, const std::function<void()>& start)
{
    const auto first = log_->count();
    const auto isOver = [&](const ExchangeLog::Exchanges& all) {
        return std::any_of(all.begin() + std::ptrdiff_t(first), all.end(),
            [&](const auto& exchange) { return exchange.method == method && exchange.isOver; });
    };
    waitFor(step, isOver, start);
    if (const auto last = log_->last(); !last || !last->isSuccess()) fail(step, "refused");
}

std::string Host::lastAnswer() const
{
    const auto last = log_->last();
    return last ? last->summary() : "";
}

} // namespace Tessel::App
