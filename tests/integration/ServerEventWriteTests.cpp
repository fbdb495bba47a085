#include "tests/integration/ServerTest.h"
#include "tests/integration/TestEvents.h"

#include <stdexcept>

namespace Tessel::Test {
namespace {

class EventWriteTest : public ServerTest {
protected:
    /// Creates the event and returns it as the server has it.
    Event create(const User& user, const Event& event) const
    {
        const Callback<std::optional<std::string>, std::optional<Error>> created;
        user.client->create(event, created);
        if (!created.wait()) throw std::runtime_error("an event was not created");
        const auto [uid, error] = created.arguments();
        EXPECT_EQ(error, std::nullopt);
        EXPECT_EQ(uid, event->uid);
        auto there = fetch(user, event->calendar, event->calendar->href + event->uid + ".ics");
        if (!there) throw std::runtime_error("a created event is not there");
        return there;
    }

    void update(const User& user, const Event& event, const Done& updated) const
    {
        user.client->update(event, updated);
        ASSERT_TRUE(updated.wait());
    }
};

using EventWriteDeathTest = EventWriteTest;

TEST_P(EventWriteTest, CreatedEventsReadBackEqual)
{
    const auto alice = discovered("alice");
    const auto work = makeCalendar(alice, "Work");
    for (const auto& event :
        {newEvent(work, "Frühstück"), newFlight(work, 900), newHoliday(work)}) {
        SCOPED_TRACE(event->summary);
        expectSame(*create(alice, event), *event);
    }
}

// "-P0DT0H-15M0S" is no duration to a server that reads its texts: one refuses the event, the other
// keeps the alarm without its time.
TEST_P(EventWriteTest, AnAlarmBeforeTheEventIsNotKept)
{
    const auto alice = discovered("alice");
    const auto flight = newFlight(makeCalendar(alice, "Work"), -900);
    if (isCyrus()) {
        const auto alarms = create(alice, flight)->alarms;
        ASSERT_TRUE(alarms && alarms->size() == 1);
        EXPECT_EQ(alarms->front()->relativeTriggerTime, std::nullopt);
        return;
    }
    surviveRefusals();
    const Callback<std::optional<std::string>, std::optional<Error>> created;
    alice.client->create(flight, created);
    ASSERT_TRUE(created.wait());
    ASSERT_TRUE(std::get<1>(created.arguments()));
    EXPECT_EQ(std::get<1>(created.arguments())->code, 400);
}

TEST_P(EventWriteTest, AnUpdateIsWrittenOverTheHeldTag)
{
    const auto alice = discovered("alice");
    const auto there = create(alice, newEvent(makeCalendar(alice, "Work"), "Lunch"));
    const Done updated;
    update(alice, renamed(*there, "Late lunch"), updated);
    EXPECT_EQ(std::get<0>(updated.arguments()), std::nullopt);
    EXPECT_EQ(transport().last("PUT", 2)->status, isCyrus() ? 204 : 201);

    const auto after = fetch(alice, there->calendar, there->href);
    ASSERT_TRUE(after);
    EXPECT_EQ(after->summary, "Late lunch");
    EXPECT_NE(after->eTag, there->eTag);
}

TEST_P(EventWriteTest, ALostUpdateLeavesTheOtherOneInPlace)
{
    const auto alice = discovered("alice");
    const auto there = create(alice, newEvent(makeCalendar(alice, "Work"), "Lunch"));
    const Done first;
    update(alice, renamed(*there, "Late lunch"), first);

    surviveRefusals();
    const Done second;
    update(alice, renamed(*there, "Early lunch"), second);
    ASSERT_TRUE(std::get<0>(second.arguments()));
    EXPECT_EQ(std::get<0>(second.arguments())->code, 412);
    EXPECT_EQ(fetch(alice, there->calendar, there->href)->summary, "Late lunch");
}

TEST_P(EventWriteDeathTest, ALostUpdateStopsTheProcess)
{
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    const auto alice = discovered("alice");
    const auto there = create(alice, newEvent(makeCalendar(alice, "Work"), "Lunch"));
    const Done first;
    update(alice, renamed(*there, "Late lunch"), first);
    EXPECT_DEATH(
        {
            const Done second;
            alice.client->update(renamed(*there, "Early lunch"), second);
            second.wait();
        },
        "412");
}

TEST_P(EventWriteTest, AMovedEventHasTheOldPathAsItsName)
{
    const auto alice = discovered("alice");
    const auto work = makeCalendar(alice, "Work");
    const auto home = makeCalendar(alice, "Home");
    const auto there = create(alice, newEvent(work, "Lunch"));
    const Done moved;
    alice.client->move(there, home, moved);
    ASSERT_TRUE(moved.wait());
    EXPECT_EQ(std::get<0>(moved.arguments()), std::nullopt);

    auto name = there->href;
    std::erase(name, '/');
    const auto after = fetch(alice, home, home->href + name);
    ASSERT_TRUE(after);
    expectSame(*after, *there);
    EXPECT_EQ(fetch(alice, work, there->href), nullptr);
}

TEST_P(EventWriteTest, ADeletedEventIsGone)
{
    const auto alice = discovered("alice");
    const auto there = create(alice, newEvent(makeCalendar(alice, "Work"), "Lunch"));
    const Done deleted;
    alice.client->deleteEvent(there, deleted);
    expectDeletion(deleted);
    EXPECT_EQ(fetch(alice, there->calendar, there->href), nullptr);
    EXPECT_EQ(http(alice, "GET", there->href).status, 404);
}

TESSEL_ON_SERVERS(EventWriteTest, "radicale", "cyrus");
TESSEL_ON_SERVERS(EventWriteDeathTest, "radicale", "cyrus");

} // namespace
} // namespace Tessel::Test
