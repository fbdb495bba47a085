#include "Tessel/Session/Session.h"
#include "tests/Tessel/Session/Text/NewEvents.h"
#include "tests/integration/ServerTest.h"

using namespace Tessel;
using namespace Tessel::Test;
using namespace std::chrono_literals;

namespace {

const EventMoment one = EventMoment::read("20240506T130000", "Europe/Berlin").value();
const EventMoment noon = EventMoment::read("20240506T120000", "Europe/Berlin").value();

class ServerSessionTest : public ServerTest {
protected:
    Session::Opened open(const std::string& user, const std::string& password = "secret") const
    {
        return wait(
            Session::open({.server = server().address(), .user = user}, Password {password}))
            .value();
    }

    std::string newCalendar(const Session::Opened& session, const std::string& name) const
    {
        const auto made = wait(session->createCalendar({.displayName = name}));
        EXPECT_TRUE(made) << (made ? "" : made.reason());
        return made ? made.value() : "";
    }
};

EventText event(const std::string& summary)
{
    return EventText::make({.summary = summary, .start = noon, .end = one}).value();
}

} // namespace

TEST_P(ServerSessionTest, DoesTheDayOfACalendar)
{
    const auto session = open("alice");
    const auto work = newCalendar(session, "Work");
    const auto home = newCalendar(session, "Home");
    const auto store = std::make_shared<MemoryStore>();
    auto synced = wait(session->sync(store));
    ASSERT_TRUE(synced) << synced.reason();
    EXPECT_TRUE(synced.value().isComplete());

    const auto created = wait(session->create(work, event("Plan")));
    ASSERT_TRUE(created) << created.reason();
    const auto again = wait(session->create(work, EventText::read(created.value().text).value()));
    ASSERT_FALSE(again);
    EXPECT_EQ(again.failure().kind, FailureKind::changed) << again.reason();

    // Another program changes the place; our new summary meets it.
    auto theirs = EventText::read(created.value().text).value();
    const auto moved = theirs.apply({.location = "Room 2"}).value().event.text();
    http(user("alice"), "PUT", created.value().href, moved);
    const auto changed = wait(
        session->change(created.value(), {.summary = "Plan, second round", .alarms = {{15min}}}));
    ASSERT_TRUE(changed) << changed.reason();
    const auto now = EventText::read(changed.value().resource.text).value();
    EXPECT_EQ(now.main().summary(), "Plan, second round");
    EXPECT_EQ(now.main().location(), "Room 2");

    const auto conflict = wait(session->change(created.value(), {.location = "Room 3"}));
    ASSERT_FALSE(conflict);
    EXPECT_EQ(conflict.failure().kind, FailureKind::changed);
    ASSERT_TRUE(conflict.failure().texts);

    synced = wait(session->sync(store));
    ASSERT_TRUE(synced) << synced.reason();
    std::size_t added = 0;
    for (const auto& each : synced.value().calendars)
        added += each.added.size();
    EXPECT_EQ(added, 1u);

    const auto there = wait(session->move(changed.value().resource, home));
    ASSERT_TRUE(there) << there.reason();
    EXPECT_TRUE(wait(session->remove(there.value())));
    EXPECT_TRUE(wait(session->remove(there.value())));
    synced = wait(session->sync(store));
    ASSERT_TRUE(synced) << synced.reason();
    EXPECT_TRUE(store->tags(work).value().empty());
    EXPECT_TRUE(wait(session->deleteCalendar(work)));
    synced = wait(session->sync(store));
    ASSERT_TRUE(synced) << synced.reason();
    EXPECT_EQ(synced.value().deletedCalendars.size(), 1u);
}

TEST_P(ServerSessionTest, KeepsTheValuesOfNewEvents)
{
    const auto session = open("alice");
    const auto calendar = newCalendar(session, "New");
    for (const auto& edit : newEvents()) {
        SCOPED_TRACE(edit.text());
        const auto made = EventText::make(edit).value();
        const auto created = wait(session->create(calendar, made));
        ASSERT_TRUE(created) << created.reason();
        const auto text = wait(session->fetch(created.value().href)).value().text;
        const auto kept = EventText::read(text).value();
        const auto ours = made.main();
        const auto theirs = kept.main();
        EXPECT_EQ(theirs.uid(), ours.uid());
        EXPECT_EQ(theirs.summary().value_or(""), ours.summary().value_or(""));
        EXPECT_EQ(theirs.description(), ours.description());
        EXPECT_EQ(theirs.location(), ours.location());
        EXPECT_EQ(theirs.url(), ours.url());
        EXPECT_EQ(theirs.status(), ours.status());
        EXPECT_EQ(theirs.categories(), ours.categories());
        EXPECT_EQ(theirs.start(), ours.start());
        EXPECT_EQ(kept.end(theirs), made.end(ours));
        EXPECT_EQ(theirs.organizer(), ours.organizer());
        EXPECT_EQ(theirs.attendees(), ours.attendees());
        EXPECT_EQ(theirs.alarms(), ours.alarms());
        EXPECT_EQ(theirs.recurrence().rules, ours.recurrence().rules);
        EXPECT_EQ(theirs.recurrence().dates, ours.recurrence().dates);
        EXPECT_EQ(theirs.recurrence().exceptions, ours.recurrence().exceptions);
    }
}

TEST_P(ServerSessionTest, SaysWhyItCannotOpen)
{
    const auto wrong
        = wait(Session::open({.server = server().address(), .user = "alice"}, Password {"wrong"}));
    ASSERT_FALSE(wrong);
    EXPECT_EQ(wrong.failure().kind, FailureKind::unauthorized) << wrong.reason();
    const auto nobody = wait(Session::open({.server = "127.0.0.1:1", .user = "a"}, Password {"b"}));
    ASSERT_FALSE(nobody);
    EXPECT_EQ(nobody.failure().kind, FailureKind::unreachable) << nobody.reason();
}

TESSEL_ON_SERVERS(ServerSessionTest, "radicale", "cyrus");
