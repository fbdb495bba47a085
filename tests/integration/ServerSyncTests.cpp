#include "tests/integration/ServerTest.h"
#include "tests/integration/TestEvents.h"

#include <algorithm>
#include <set>

namespace Tessel::Test {
namespace {

class SyncTest : public ServerTest {
protected:
    void put(const User& user, const Calendar& calendar, const std::string& uid,
        const std::string& summary) const
    {
        const auto status
            = http(user, "PUT", calendar->href + uid + ".ics", eventText(uid, summary)).status;
        EXPECT_TRUE(status == 201 || status == 204) << status;
    }

    /// What the host hears in one sync, until that line.
    std::vector<std::string> sync(const User& user, const std::string& lastLine) const
    {
        const auto heard = user.host->lines().size();
        user.client->sync();
        std::vector<std::string> lines;
        EXPECT_TRUE(waitFor([&] {
            lines = user.host->lines();
            lines.erase(lines.begin(), lines.begin() + std::ptrdiff_t(heard));
            return !lines.empty() && lines.back() == lastLine;
        }));
        return lines;
    }

    /// The host keeps the calendar as it is now, and the events that it has just heard of.
    void hold(const User& user, const std::string& name) const
    {
        user.host->heldCalendars = {find(user, name)};
        user.host->heldEvents = user.host->lastEvents();
    }
};

std::set<std::string> names(const std::string& line)
{
    std::set<std::string> names;
    for (auto start = line.find(": "); start != std::string::npos;) {
        const auto end = line.find(", ", start + 2);
        names.insert(line.substr(start + 2, end - start - 2));
        start = end;
    }
    return names;
}

TEST_P(SyncTest, ASecondSyncTellsExactlyWhatChangedBehindItsBack)
{
    const auto alice = discovered("alice");
    const auto work = makeCalendar(alice, "Work");
    const auto finished = "eventsSyncFinished " + work->href;
    for (const auto uid : {"edited", "removed", "same"})
        put(alice, work, uid, "First");

    const auto first = sync(alice, finished);
    ASSERT_EQ(first.size(), 4U);
    EXPECT_EQ(first[0], "calendarsAdded " + work->href);
    EXPECT_EQ(first[1], "calendarSyncFinished");
    EXPECT_EQ(names(first[2]), (std::set<std::string> {"edited", "removed", "same"}));
    EXPECT_EQ(alice.host->lastEvents().front()->summary, "First");
    hold(alice, "Work");

    put(alice, work, "edited", "Second");
    put(alice, work, "added", "New");
    EXPECT_EQ(http(alice, "DELETE", work->href + "removed.ics").status, isCyrus() ? 204 : 200);
    auto second = sync(alice, finished);
    ASSERT_EQ(second.size(), 6U);
    EXPECT_EQ(second[0], "calendarsEdited " + work->href);
    EXPECT_EQ(second[1], "calendarSyncFinished");
    EXPECT_TRUE(second[2].starts_with("eventsDeleted " + work->href));
    EXPECT_EQ(names(second[2]), (std::set<std::string> {"edited", "same"}))
        << "it carries the held events that are still there";
    std::sort(second.begin() + 3, second.begin() + 5); // the two fetches run side by side
    EXPECT_EQ(second[3], "eventsAdded " + work->href + ": added");
    EXPECT_EQ(second[4], "eventsEdited " + work->href + ": edited");
}

TEST_P(SyncTest, AnUnchangedAccountCostsOneRequestAndADeletedCalendarIsReported)
{
    const auto alice = discovered("alice");
    const auto work = makeCalendar(alice, "Work");
    put(alice, work, "same", "First");
    sync(alice, "eventsSyncFinished " + work->href);
    hold(alice, "Work");

    const auto sent = transport().exchanges().size();
    EXPECT_EQ(
        sync(alice, "calendarSyncFinished"), (std::vector<std::string> {"calendarSyncFinished"}));
    EXPECT_EQ(transport().exchanges().size(), sent + 1);

    http(alice, "DELETE", work->href);
    EXPECT_EQ(sync(alice, "calendarSyncFinished").front(), "calendarsDeleted " + work->href);
    const auto exchanges = transport().exchanges();
    EXPECT_EQ(std::count_if(exchanges.begin() + std::ptrdiff_t(sent), exchanges.end(),
                  [](const Exchange& exchange) { return exchange.method == "REPORT"; }),
        0)
        << "no event sync where nothing changed";
}

TEST_P(SyncTest, AListingOfManyEventsIsFetchedInOneRequest)
{
    constexpr std::size_t count = 300;
    constexpr std::size_t batch = 20; // which a slow server ends in time
    const auto alice = discovered("alice");
    const auto calendar = makeCalendar(alice, "Large");
    for (std::size_t i = 0; i < count; ++i) {
        const auto uid = "uid-" + std::to_string(i);
        const auto path = calendar->href + uid + ".ics";
        send(alice, "PUT", path, eventText(uid, "Event"), [](auto&&...) {});
        if ((i + 1) % batch == 0) {
            ASSERT_EQ(transport().last("PUT", i + 1)->status, 201);
        }
    }

    const auto lines = sync(alice, "eventsSyncFinished " + calendar->href);
    ASSERT_EQ(lines.size(), 4U);
    EXPECT_EQ(names(lines[2]).size(), count);
    const auto exchanges = transport().exchanges();
    EXPECT_EQ(std::count_if(exchanges.begin(), exchanges.end(),
                  [](const Exchange& exchange) { return exchange.method == "REPORT"; }),
        2)
        << "the tags and the texts";
}

TESSEL_ON_SERVERS(SyncTest, "radicale", "cyrus");

} // namespace
} // namespace Tessel::Test
