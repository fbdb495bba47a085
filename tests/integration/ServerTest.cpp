#include "integration/ServerTest.h"

namespace Tessel::Test {

void ServerTest::SetUp()
{
    if (const auto why = ServerProcess::whyUnavailable(serverName_); !why.empty()) {
        GTEST_SKIP() << "needs the real server " << serverName_ << ": " << why;
    }
    server_ = std::make_unique<ServerProcess>(serverName_);
    MNetworkManager::setSharedInstance(std::make_shared<MCurlNetworkManager>(
        MNetworkConfiguration {.authorityFile = server_->authorityFile()}));
}

void ServerTest::TearDown()
{
    MNetworkManager::setSharedInstance(nullptr);
}

User ServerTest::user(const std::string& name, const std::string& password) const
{
    User user {.name = name};
    user.host->credential = MRVUtilities::basicAuthString(name, password);
    user.account = std::make_shared<MRVAccount>(MRVAccount {
        .identifier = name,
        .email = name + "@example.com",
        .serverURL = "localhost:" + server_->port(),
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
    EXPECT_TRUE(ended.wait());
    EXPECT_TRUE(found.account->calendarHomeURL);
    return found;
}

ServerTest::Calendar ServerTest::makeCalendar(const User& user, const std::string& name) const
{
    const Callback<std::optional<Error>> made;
    user.client->create(std::make_shared<MRVCalendar>(MRVCalendar {
                            .displayName = name,
                            .timeZone = TimeZone::withIdentifier("Europe/Berlin").value(),
                            .account = user.account,
                            .supportedComponents = MRVCalendarComponents::event,
                        }),
        made);
    EXPECT_TRUE(made.wait());
    EXPECT_FALSE(std::get<0>(made.arguments()));
    return find(user, name);
}

ServerTest::Calendars ServerTest::list(const User& user) const
{
    const Callback<std::optional<Calendars>, std::optional<Error>> listed;
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

ServerTest::Answer ServerTest::http(const User& user, const std::string& method,
    const std::string& path, const std::string& body) const
{
    URLRequest request("https://localhost:" + server_->port() + path);
    request.method = method;
    request.body = Data(body);
    request.headers.set(MRVHeaderAuthorization, user.host->credential);
    if (!body.empty()) request.headers.set("Content-Type", "text/calendar; charset=utf-8");

    const Callback<Data, std::shared_ptr<const URLResponse>, std::optional<std::string>,
        std::optional<Error>, int>
        answered;
    MNetworkManager::sharedInstance()->send({.request = request, .completionHandler = answered});
    if (!answered.wait()) throw std::runtime_error("no answer to " + method);
    const auto [data, response, ignored, error, number] = answered.arguments();
    const auto http = dynamic_cast<const HTTPURLResponse*>(response.get());
    return {http ? http->statusCode : 0, std::string(data.view())};
}

std::string ServerTest::text(const std::string& uid, const std::string& summary, int day)
{
    const auto date = "202701" + std::string(day < 10 ? "0" : "") + std::to_string(day);
    return "BEGIN:VCALENDAR\r\nVERSION:2.0\r\nPRODID:-//Example//Test//EN\r\nBEGIN:VEVENT\r\nUID:"
        + uid + "\r\nDTSTAMP:20261101T080000Z\r\nCREATED:20261101T080000Z\r\n"
        + "LAST-MODIFIED:20261101T080000Z\r\nDTSTART:" + date + "T090000Z\r\nDTEND:" + date
        + "T100000Z\r\nSUMMARY:" + summary
        + "\r\nSTATUS:CONFIRMED\r\nEND:VEVENT\r\nEND:VCALENDAR\r\n";
}

std::shared_ptr<MRVEvent> newEvent(
    const std::shared_ptr<MRVCalendar>& calendar, const std::string& summary)
{
    const auto berlin = TimeZone::withIdentifier("Europe/Berlin");
    const auto sender = MRVAttendee {
        .email = "alice+work@example.com",
        .role = "organizer",
        .isOrganizer = true,
    };
    return std::make_shared<MRVEvent>(MRVEvent {
        .desc = "Käse\\, Pierogi\\n東京",
        .status = "CONFIRMED",
        .summary = summary,
        .createdDate = Date::fromSecondsSince1970(1'790'000'000),
        .lastModifiedDate = Date::fromSecondsSince1970(1'790'000'000),
        .startDate = Date::fromSecondsSince1970(1'804'500'000),
        .endDate = Date::fromSecondsSince1970(1'804'503'600),
        .startTimeZone = berlin,
        .endTimeZone = berlin,
        .attendees = std::vector {std::make_shared<MRVAttendee>(sender)},
        .recurRule = "FREQ=WEEKLY;COUNT=4",
        .calendar = calendar,
    });
}

std::shared_ptr<MRVEvent> renamed(const MRVEvent& event, const std::string& summary)
{
    return std::make_shared<MRVEvent>(MRVEvent {
        .uid = event.uid,
        .href = event.href,
        .eTag = event.eTag,
        .desc = event.desc,
        .status = event.status,
        .summary = summary,
        .createdDate = event.createdDate,
        .lastModifiedDate = event.lastModifiedDate,
        .startDate = event.startDate,
        .endDate = event.endDate,
        .startTimeZone = event.startTimeZone,
        .endTimeZone = event.endTimeZone,
        .recurRule = event.recurRule,
        .calendar = event.calendar,
    });
}

} // namespace Tessel::Test
