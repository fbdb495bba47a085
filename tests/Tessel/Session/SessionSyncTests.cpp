#include "tests/Tessel/Session/World.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>

using namespace Tessel;
using namespace Tessel::Test;

namespace {

using Reply = FakeCalendarServer::Reply;

/// A world whose first calendar is synced into a store.
struct Synced : World {
    explicit Synced(bool hasTokens = true)
    {
        server->hasSyncTokens = hasTokens;
        sync();
    }

    Changes sync() const { return wait(session->sync(store)).value(); }
    /// What the sync did in the first calendar.
    CalendarChanges synced() const { return sync().calendars.front(); }
    std::vector<std::string> held() const
    {
        std::vector<std::string> hrefs;
        for (const auto& tag : store->tags("/home/a/").value())
            hrefs.push_back(tag.href);
        return hrefs;
    }

    std::shared_ptr<MemoryStore> store = std::make_shared<MemoryStore>();
};

using Names = std::vector<std::string>;

/// Answers the first request whose body holds `part` by `answer`, which gets the true answer.
void meddle(const World& world, const std::string& part, std::function<Reply(Reply)> answer)
{
    world.server->setFault(
        [part, answer, isOver = std::make_shared<bool>(false)](
            const URLRequest& request, const auto& apply) -> std::optional<Reply> {
            if (*isOver || request.body.view().find(part) == std::string_view::npos)
                return std::nullopt;
            *isOver = true;
            return answer(apply());
        });
}

} // namespace

TEST(SessionSync, BringsWhatIsNewChangedAndGoneByTokenAndByTags)
{
    for (const bool hasTokens : {true, false}) {
        Synced world(hasTokens);
        EXPECT_EQ(world.held(), Names {"/home/a/one.ics"});

        world.server->put("/home/a/two.ics", eventText("two"));
        world.server->put("/home/a/three.ics", eventText("three"));
        EXPECT_EQ(world.synced().added.size(), 2u);
        world.server->put("/home/a/two.ics", eventText("two again"));
        world.server->remove("/home/a/one.ics");
        const auto changes = world.synced();
        EXPECT_EQ(changes.edited, Names {"/home/a/two.ics"});
        EXPECT_EQ(changes.deleted, Names {"/home/a/one.ics"});
        EXPECT_EQ(world.held(), (Names {"/home/a/three.ics", "/home/a/two.ics"}));
        EXPECT_EQ(world.store->resource("/home/a/", "/home/a/two.ics").value()->text,
            eventText("two again"));

        const auto reports = world.server->asked("REPORT");
        EXPECT_TRUE(world.synced().edited.empty());
        EXPECT_EQ(world.server->asked("REPORT"), reports) << "nothing has changed";

        world.server->remove("/home/a/two.ics");
        world.server->remove("/home/a/three.ics");
        EXPECT_EQ(world.synced().deleted.size(), 2u);
        EXPECT_TRUE(world.held().empty());
    }
}

TEST(SessionSync, TellsOfItsProgressUntilItIsWaitedForAndNotAfter)
{
    World world;
    std::atomic<int> telling {0};
    std::atomic<int> told {0};
    for (int i = 0; i < 20; ++i) {
        const auto store = std::make_shared<MemoryStore>();
        const auto changes = wait(world.session->sync(store, [&](const SyncProgress&) {
            ++telling;
            std::this_thread::sleep_for(std::chrono::milliseconds(2));
            ++told;
            --telling;
        }));
        EXPECT_TRUE(changes);
        EXPECT_EQ(telling, 0);
        const int before = told;
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
        EXPECT_EQ(told, before);
    }
    EXPECT_GT(told, 20);
}

TEST(SessionSync, GoesOnPageByPageAndComparesAllWhenTheTokenHasExpired)
{
    Synced world;
    world.server->page = 2;
    for (int i = 0; i < 7; ++i)
        world.server->put("/home/a/" + std::to_string(i) + ".ics", eventText(std::to_string(i)));
    EXPECT_EQ(world.synced().added.size(), 7u);

    world.server->expireTokens();
    world.server->remove("/home/a/3.ics");
    EXPECT_EQ(world.synced().deleted, Names {"/home/a/3.ics"});
    EXPECT_EQ(world.held().size(), 7u);
}

TEST(SessionSync, NamesWhatCannotBeBroughtAndAsksForItAgain)
{
    const std::pair<const char*, std::function<Reply(Reply)>> answers[] = {
        {"no calendar",
            [](Reply reply) {
                const auto at = reply.body.find("BEGIN:VCALENDAR");
                return Reply {.status = 207, .body = reply.body.replace(at, 15, "BEGIN:NONSENSE")};
            }},
        {"404",
            [](Reply reply) {
                const auto at = reply.body.find("HTTP/1.1 200 OK");
                return Reply {
                    .status = 207, .body = reply.body.replace(at, 15, "HTTP/1.1 404 Not Found")};
            }},
        {"not answered",
            [](Reply reply) {
                const auto start = reply.body.find("<d:response>");
                const auto end = reply.body.find("</d:response>");
                reply.body.erase(start, end + 13 - start);
                return reply;
            }},
    };
    for (const auto& [name, answer] : answers) {
        Synced world;
        world.server->put("/home/a/two.ics", eventText("two"));
        world.server->put("/home/a/three.ics", eventText("three"));
        meddle(world, "calendar-multiget", answer);
        const auto changes = world.synced();
        EXPECT_EQ(changes.added.size(), 1u) << name;
        ASSERT_EQ(changes.failed.size(), 1u) << name;
        EXPECT_FALSE(changes.failed.front().reason.empty());
        EXPECT_EQ(world.held().size(), 2u);

        EXPECT_EQ(world.synced().added.size(), 1u) << name;
        EXPECT_EQ(world.held().size(), 3u);
        EXPECT_TRUE(world.store->failed("/home/a/").value().empty());
    }
}

/// Halving what is asked for finds the one resource that a server fails over, not a server that
/// fails.
TEST(SessionSync, GivesUpWhereEveryRequestForTextsFails)
{
    for (const int status : {500, 504, 200}) {
        Synced world;
        const auto asked = world.server->asked("REPORT");
        for (int i = 0; i < 300; ++i)
            world.server->put("/home/a/" + std::to_string(i) + ".ics", eventText("new"));
        const auto mark = world.store->calendars().value().front().mark;
        world.server->setFault(
            [status](const URLRequest& request, const auto&) -> std::optional<Reply> {
                if (request.body.view().find("calendar-multiget") == std::string_view::npos)
                    return std::nullopt;
                return Reply {.status = status, .body = "<html>Sign in"};
            });
        EXPECT_TRUE(world.synced().failure) << status;
        EXPECT_LT(world.server->asked("REPORT") - asked, 110u);
        EXPECT_EQ(world.store->calendars().value().front().mark, mark);
    }
}

/// A reader of XML makes a line feed of a line end, unless its carriage return is escaped.
TEST(SessionSync, HoldsTheLineEndsThatTheServerHas)
{
    for (const bool escapes : {true, false}) {
        World world;
        world.server->escapesCarriageReturns = escapes;
        const auto store = std::make_shared<MemoryStore>();
        EXPECT_TRUE(wait(world.session->sync(store)));
        EXPECT_EQ(store->resource("/home/a/", "/home/a/one.ics").value()->text, eventText("one"));
    }
}

TEST(SessionSync, LeavesACalendarThatFailsAsItIsAndGoesOnWithTheOthers)
{
    const std::pair<const char*, int> refusals[]
        = {{"sync-collection", 503}, {"calendar-multiget", 403}};
    for (const auto& [part, status] : refusals) {
        Synced world;
        world.server->put("/home/a/two.ics", eventText("two"));
        world.server->remove("/home/a/one.ics");
        world.server->put("/home/b/other.ics", eventText("other"));
        meddle(world, part, [status = status](Reply) { return Reply {.status = status}; });
        const auto changes = world.sync();
        ASSERT_EQ(changes.calendars.size(), 2u);
        ASSERT_TRUE(changes.calendars[0].failure) << part;
        EXPECT_EQ(changes.calendars[0].failure->status, status);
        EXPECT_TRUE(changes.calendars[0].deleted.empty());
        EXPECT_FALSE(changes.isComplete());
        EXPECT_EQ(world.held(), Names {"/home/a/one.ics"});
        // A server that asks for quiet is left alone.
        EXPECT_EQ(changes.calendars[1].added.size(), status == 503 ? 0u : 1u);

        EXPECT_TRUE(world.sync().isComplete());
        EXPECT_EQ(world.held(), Names {"/home/a/two.ics"});
    }
}

TEST(SessionSync, TakesNoListThatFailsForDeletions)
{
    Synced world(false);
    world.server->put("/home/a/two.ics", eventText("two"));
    for (const auto& reply :
        {Reply {.status = 500}, Reply {.status = 207, .body = "<multistatus xmlns=\"DAV:\"/>"},
            Reply {.status = 200, .body = "<html/>"}, Reply {}}) {
        meddle(world, "getetag/><d:resourcetype", [&](Reply) { return reply; });
        EXPECT_TRUE(world.synced().failure);
        EXPECT_EQ(world.held(), Names {"/home/a/one.ics"});
        meddle(world, "calendar-color", [&](Reply) { return reply; });
        EXPECT_FALSE(wait(world.session->sync(world.store)));
        EXPECT_EQ(world.store->calendars().value().size(), 2u);
    }
}

TEST(SessionSync, RemovesCalendarsThatAreGoneAndTellsOfNewOnes)
{
    Synced world;
    EXPECT_TRUE(wait(world.session->deleteCalendar("/home/a/")));
    world.server->addCalendar("/home/c/");
    const auto changes = world.sync();
    EXPECT_EQ(changes.deletedCalendars, Names {"/home/a/"});
    EXPECT_EQ(changes.addedCalendars, Names {"/home/c/"});
    EXPECT_EQ(world.store->calendars().value().size(), 2u);
}

TEST(SessionSync, HoldsAResourceOnceHoweverItIsSpelled)
{
    for (const bool hasTokens : {true, false}) {
        Synced world(hasTokens);
        const Resource ghost {"/home/a/%6Fne.ics", "\"0\"", eventText("ghost")};
        EXPECT_TRUE(world.store->apply({.calendar = "/home/a/", .upserts = {ghost}}));
        EXPECT_EQ(world.held().size(), 2u);
        world.server->put("/home/a/two.ics", eventText("two"));
        EXPECT_TRUE(world.synced().deleted.empty());
        world.server->remove("/home/a/two.ics");
        EXPECT_EQ(world.synced().deleted.size(), 1u);
        ASSERT_EQ(world.held(), Names {ghost.href});
        EXPECT_EQ(world.store->resource("/home/a/", ghost.href).value()->text, eventText("one"));

        // An outbox stores what it has created while a sync brings it.
        const Resource created {"/home/a/u%40h.ics", {}, eventText("u@h")};
        world.server->put("/home/a/u@h.ics", created.text);
        meddle(world, "calendar-multiget", [&](Reply reply) {
            EXPECT_TRUE(world.store->apply({.calendar = "/home/a/", .upserts = {created}}));
            return reply;
        });
        EXPECT_TRUE(world.sync().isComplete());
        EXPECT_EQ(world.held(), (Names {ghost.href, created.href}));
        world.server->remove("/home/a/u@h.ics");
        EXPECT_TRUE(world.sync().isComplete());
        EXPECT_EQ(world.held(), Names {ghost.href});
    }
}
