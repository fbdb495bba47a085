#include "tests/support/ClientSession.h"
#include "tests/support/SameAnswer.h"

#include <gtest/gtest.h>

using namespace Tessel;
using namespace Tessel::Test;

namespace {

using Listed
    = Callback<std::optional<std::vector<std::shared_ptr<MRVCalendar>>>, std::optional<Error>>;
using Created = Callback<std::optional<Error>>;
using Updated = Callback<std::optional<MRVClient::PropertyResults>>;

std::shared_ptr<MRVCalendar> described(std::string href, std::string zone)
{
    return std::make_shared<MRVCalendar>(MRVCalendar {
        .calID = "",
        .href = std::move(href),
        .displayName = "R&D <\xC3\xA4>",
        .cTag = "",
        .desc = "What we do",
        .order = "3",
        .color = "#FF0000FF",
        .syncToken = "",
        .owner = "",
        .timeZone = *TimeZone::withIdentifier(zone),
        .account = knownAccount(),
        .supportedComponents = {{MRVCalendarComponents::event, MRVCalendarComponents::todo}},
    });
}

} // namespace

TEST(GetCalendars, ListsTheCalendarsOfTheHome)
{
    ClientSession session(loadScript("list-calendars.script"));
    Listed listed;
    session.client->getCalendars(listed);
    ASSERT_TRUE(listed.wait());
    const auto [calendars, error] = listed.arguments();
    EXPECT_FALSE(error);
    ASSERT_EQ(calendars->size(), 1u);
    EXPECT_EQ(calendars->front()->displayName, "Work");
    EXPECT_EQ(calendars->front()->account, session.account);
}

TEST(CreateCalendar, SendsWhatTheCalendarSays)
{
    ClientSession session(loadScript("create-calendar.script"));
    Created created;
    session.client->create(described("/home/new/", "Europe/Berlin"), created);
    ASSERT_TRUE(created.wait());
    EXPECT_FALSE(std::get<0>(created.arguments()));
}

TEST(CreateCalendar, NamesANewCollectionInTheHome)
{
    const auto transport = std::make_shared<SameAnswer>("201");
    const HostSession session(transport);
    Created created;
    session.client->create(described("", "UTC"), created);
    ASSERT_TRUE(created.wait());
    const auto url = transport->request->url();
    EXPECT_TRUE(url.starts_with("https://server.example/home/")) << url;
    EXPECT_TRUE(url.ends_with("/"));
    EXPECT_EQ(url.size(), std::string("https://server.example/home//").size() + 36);
}

TEST(CreateCalendar, LeavesOutWhatIsEmpty)
{
    for (const auto components : {MRVCalendarComponents(), MRVCalendarComponents::none}) {
        const auto transport = std::make_shared<SameAnswer>("201");
        const HostSession session(transport);
        const auto calendar = described("/home/new/", "UTC");
        calendar->supportedComponents = components;
        const Created created;
        session.client->create(calendar, created);
        ASSERT_TRUE(created.wait());
        EXPECT_EQ(transport->request->body.view().find("component-set"), std::string_view::npos);
    }
}

TEST(CreateCalendar, SendsTheDefinitionOfItsOwnZone)
{
    // The bundle's files of these last components are those of other zones.
    for (const std::string zone : {"Brazil/West", "Asia/Istanbul", "Canada/Central"}) {
        const auto transport = std::make_shared<SameAnswer>("201");
        const HostSession session(transport);
        Created created;
        session.client->create(described("/home/new/", zone), created);
        ASSERT_TRUE(created.wait());
        const auto text = transport->request->body.view();
        EXPECT_NE(text.find("TZID:" + zone), text.npos) << text;
        EXPECT_EQ(text.find("TZID:"), text.rfind("TZID:")) << text;
    }
}

TEST(UpdateProperty, ReportsEachPropertysOutcome)
{
    const auto exchanges = loadScript("update-calendar.script").exchanges;
    const auto resultsAfter = [](const ScriptedExchange& exchange) {
        ClientSession session(Script {.exchanges = {exchange}});
        const Updated updated;
        session.client->update(calendarAt("/home/work/", session.account),
            {{MRVCalendar::propertyColor, "#<"}, {MRVCalendar::propertyOrder, "7"}, {"x", "y"}},
            updated);
        EXPECT_TRUE(updated.wait()) << exchange.title;
        return std::get<0>(updated.arguments());
    };
    ASSERT_EQ(exchanges.size(), 3u);
    using enum MRVStatusCode;
    using Results = MRVClient::PropertyResults;
    EXPECT_EQ(resultsAfter(exchanges[0]),
        (Results {{"color", forbidden}, {"order", other}, {"x", other}}));
    EXPECT_EQ(
        resultsAfter(exchanges[1]), (Results {{"color", OK}, {"order", notFound}, {"x", other}}));
    EXPECT_FALSE(resultsAfter(exchanges[2])) << "a truncated answer is no multistatus";
}

TEST(UpdateProperty, AnswersWithoutARequestWhenNothingIsKnown)
{
    ClientSession nothingToSend("");
    Updated updated;
    nothingToSend.client->update(calendarAt("/c/", nothingToSend.account), {{"x", "y"}}, updated);
    ASSERT_TRUE(updated.wait());
    EXPECT_EQ(std::get<0>(updated.arguments())->at("x"), MRVStatusCode::other);
}

TEST(Delete, SucceedsWith204Only)
{
    ClientSession session(loadScript("delete.script"));
    const Created done;
    const auto calendar = calendarAt("/cal/", session.account);
    session.client->deleteCalendar(calendar, done);
    ASSERT_TRUE(done.wait(1));
    session.client->deleteEvent(eventAt("/cal/e1.ics", "1", calendar), done);
    ASSERT_TRUE(done.wait(2));
    const MRVNotification note {.account = session.account, .href = "/notes/n1.xml"};
    session.client->deleteNotification(std::make_shared<MRVNotification>(note), done);
    ASSERT_TRUE(done.wait(3));
    EXPECT_FALSE(std::get<0>(done.arguments(2)));
}

TEST(GetCalendarsDeathTest, StopsWithoutACalendarHome)
{
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_DEATH(
        {
            ClientSession session("");
            session.account->calendarHomeURL.reset();
            Listed listed;
            session.client->getCalendars(listed);
            listed.wait();
        },
        "calendar home is not known");
}
