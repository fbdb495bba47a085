#include "tests/integration/ServerTest.h"

namespace Tessel::Test {
namespace {

class CalendarTest : public ServerTest { };

TEST_P(CalendarTest, ACreatedCalendarIsListedEqualAndChanged)
{
    const auto alice = discovered("alice");
    const auto href = *alice.account->calendarHomeURL + "work/";
    const Done made;
    alice.client->create(
        std::make_shared<MRVCalendar>(MRVCalendar {
            .href = href,
            .displayName = "Büro & <mehr>",
            .desc = "\"all\" that's work",
            .order = "3",
            .color = "#2E7D32FF",
            .timeZone = TimeZone::withIdentifier("Europe/Berlin").value(),
            .account = alice.account,
            .supportedComponents
            = MRVCalendarComponents {MRVCalendarComponents::event, MRVCalendarComponents::todo},
        }),
        made);
    ASSERT_TRUE(made.wait());
    ASSERT_EQ(std::get<0>(made.arguments()), std::nullopt);

    const auto listed = list(alice);
    ASSERT_EQ(listed.size(), 1U);
    const auto& calendar = *listed.front();
    EXPECT_EQ(calendar.href, href);
    EXPECT_EQ(calendar.calID, "alice" + href);
    EXPECT_EQ(calendar.displayName, "Büro & <mehr>");
    EXPECT_EQ(calendar.desc, "\"all\" that's work");
    EXPECT_EQ(calendar.order, "3");
    EXPECT_EQ(calendar.color, "#2E7D32FF");
    EXPECT_EQ(calendar.timeZone.identifier(), "Europe/Berlin");
    EXPECT_EQ(calendar.owner, *alice.account->principalURL);
    EXPECT_FALSE(calendar.cTag.empty());
    EXPECT_FALSE(calendar.isShared);
    ASSERT_TRUE(calendar.supportedComponents);
    EXPECT_EQ(calendar.supportedComponents->rawValue(), 7);

    const Callback<std::optional<MRVClient::PropertyResults>> changed;
    alice.client->update(listed.front(),
        {{MRVCalendar::propertyColor, "#C62828FF"}, {MRVCalendar::propertyOrder, "1"}}, changed);
    ASSERT_TRUE(changed.wait());
    EXPECT_EQ(std::get<0>(changed.arguments()),
        (MRVClient::PropertyResults {{MRVCalendar::propertyColor, MRVStatusCode::OK},
            {MRVCalendar::propertyOrder, MRVStatusCode::OK}}));
    EXPECT_EQ(list(alice).front()->color, "#C62828FF");
    EXPECT_EQ(list(alice).front()->order, "1");

    const Done again;
    alice.client->create(listed.front(), again);
    ASSERT_TRUE(again.wait());
    EXPECT_TRUE(std::get<0>(again.arguments())) << "the collection exists";
}

TEST_P(CalendarTest, ADeletedCalendarIsGone)
{
    const auto alice = discovered("alice");
    const auto calendar = makeCalendar(alice, "Work");
    const Done deleted;
    alice.client->deleteCalendar(calendar, deleted);
    expectDeletion(deleted);
    EXPECT_TRUE(list(alice).empty());
}

TESSEL_ON_SERVERS(CalendarTest, "radicale", "cyrus");

} // namespace
} // namespace Tessel::Test
