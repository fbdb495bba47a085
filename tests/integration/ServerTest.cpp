#include "tests/integration/ServerTest.h"

#include <stdexcept>

namespace Tessel::Test {

void ServerTest::SetUp()
{
    server_ = &CalendarServer::named(GetParam());
    if (!server_->absence().empty()) GTEST_SKIP() << "no real server: " << server_->absence();
    ASSERT_TRUE(server_->isRunning()) << "the server did not start";
    transport_ = std::make_shared<ExchangeRecorder>(server_->authorityFile());
    MNetworkManager::setSharedInstance(transport_);
    empty(discovered("alice"));
    if (isCyrus()) empty(discovered("bob"));
    transport_->forget();
}

void ServerTest::TearDown()
{
    MNetworkManager::setSharedInstance(nullptr);
}

void ServerTest::empty(const User& user) const
{
    for (const auto& calendar : list(user))
        http(user, "DELETE", calendar->href);
    if (!user.account->notificationURL) return;
    const auto listing = http(user, "PROPFIND", *user.account->notificationURL).body;
    for (std::size_t end = 0; (end = listing.find(".xml</", end)) != std::string::npos; ++end) {
        const auto start = listing.rfind('>', end) + 1;
        http(user, "DELETE", listing.substr(start, end + 4 - start));
    }
}

User ServerTest::user(const std::string& name, const std::string& password) const
{
    User user {.name = name};
    user.host->credential = MRVUtilities::basicAuthString(name, password);
    user.account = std::make_shared<MRVAccount>(MRVAccount {
        .identifier = name,
        .email = name + "@example.com",
        .serverURL = server_->address(),
    });
    user.client = std::make_shared<MRVClient>(user.account, user.host);
    user.client->setSyncDelegate(user.host);
    user.client->setDataSource(user.host);
    return user;
}

User ServerTest::discovered(const std::string& name) const
{
    auto found = user(name);
    const Callback<std::shared_ptr<MRVAccount>> ended;
    const auto provider = std::make_shared<MRVAccountInfoProvider>(found.account, found.host);
    provider->getAccountInfo(ended);
    if (!ended.wait()) throw std::runtime_error("the account was not found");
    return found;
}

ServerTest::Calendar ServerTest::makeCalendar(const User& user, const std::string& name) const
{
    const Done made;
    user.client->create(std::make_shared<MRVCalendar>(MRVCalendar {
                            .displayName = name,
                            .timeZone = TimeZone::withIdentifier("Europe/Berlin").value(),
                            .account = user.account,
                            .supportedComponents = MRVCalendarComponents::event,
                        }),
        made);
    if (!made.wait()) throw std::runtime_error("no answer for a new calendar");
    EXPECT_EQ(std::get<0>(made.arguments()), std::nullopt);
    return find(user, name);
}

ServerTest::Calendars ServerTest::list(const User& user) const
{
    const Listed listed;
    user.client->getCalendars(listed);
    if (!listed.wait()) throw std::runtime_error("no listing of calendars");
    return std::get<0>(listed.arguments()).value_or(Calendars {});
}

ServerTest::Calendar ServerTest::find(const User& user, const std::string& name) const
{
    for (const auto& calendar : list(user)) {
        if (calendar->displayName == name) return calendar;
    }
    throw std::runtime_error("the server lists no calendar " + name);
}

ServerTest::Event ServerTest::fetch(
    const User& user, const Calendar& calendar, const std::string& href) const
{
    const Callback<std::optional<Events>, std::optional<Error>> fetched;
    user.client->getEvent(href, calendar, false, fetched);
    if (!fetched.wait()) throw std::runtime_error("no answer for an event");
    const auto events = std::get<0>(fetched.arguments()).value_or(Events {});
    return events.empty() ? nullptr : events.front();
}

ServerTest::Notifications ServerTest::notifications(const User& user) const
{
    const Callback<std::optional<Notifications>, std::optional<Error>> fetched;
    user.client->getNotifications(fetched);
    if (!fetched.wait()) throw std::runtime_error("no answer for the notifications");
    EXPECT_EQ(std::get<1>(fetched.arguments()), std::nullopt);
    return std::get<0>(fetched.arguments()).value_or(Notifications {});
}

ServerTest::Answer ServerTest::http(const User& user, const std::string& method,
    const std::string& path, const std::string& body) const
{
    const Callback<Data, std::shared_ptr<const URLResponse>, std::optional<std::string>,
        std::optional<Error>, int>
        answered;
    send(user, method, path, body, answered);
    if (!answered.wait()) throw std::runtime_error("no answer to " + method);
    const auto [data, response, ignored, error, number] = answered.arguments();
    const auto http = dynamic_cast<const HTTPURLResponse*>(response.get());
    return {http ? http->statusCode : 0, std::string(data.view())};
}

void ServerTest::send(const User& user, const std::string& method, const std::string& path,
    const std::string& body, MTask::CompletionHandler completion) const
{
    URLRequest request("https://" + server_->address() + path);
    request.method = method;
    request.body = Data(body);
    request.headers.set(MRVHeaderAuthorization, user.host->credential);
    if (!body.empty()) request.headers.set("Content-Type", "text/calendar; charset=utf-8");
    if (method == "PROPFIND") request.headers.set("Depth", "1");
    transport_->send({.request = request, .completionHandler = std::move(completion)});
}

void ServerTest::expectDeletion(const Done& told) const
{
    const auto answer = transport_->last("DELETE");
    ASSERT_TRUE(answer);
    EXPECT_EQ(answer->status, isCyrus() ? 204 : 200);
    EXPECT_EQ(told.count(), isCyrus() ? 1U : 0U);
}

} // namespace Tessel::Test
