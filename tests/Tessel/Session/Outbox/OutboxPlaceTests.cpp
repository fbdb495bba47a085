#include "tests/Tessel/Session/Outbox/OutboxWorld.h"

using namespace Tessel;
using namespace Tessel::Test;

namespace {

using Reply = FakeCalendarServer::Reply;

} // namespace

/// The place of an event whose UID has "@" is spelled in one way here and in another there.
TEST(OutboxPlaces, HoldsAnEventOnceHoweverItsPlaceIsSpelled)
{
    const auto event = EventText::read(eventText("u@h")).value();
    const std::string theirs = "/home/a/u@h.ics";
    for (const bool isSyncedMeanwhile : {false, true}) {
        OutboxWorld world;
        const auto created = world.outbox.create("/home/a/", event).value();
        ASSERT_NE(created.href, theirs);
        world.server->setFault([&](const URLRequest& request, const auto& apply) {
            if (request.method != "PUT" && !isSyncedMeanwhile) return std::optional(Reply {});
            if (request.method != "PUT") return std::optional<Reply>();
            auto reply = apply();
            if (!isSyncedMeanwhile) return std::optional(Reply {});
            const Resource brought {theirs, reply.headers.value("ETag").value(), event.text()};
            EXPECT_TRUE(world.store->apply({.calendar = "/home/a/", .upserts = {brought}}));
            return std::optional(reply);
        });
        EXPECT_EQ(world.send().done.size(), isSyncedMeanwhile ? 1u : 0u);
        world.server->setFault({});
        if (!isSyncedMeanwhile) {
            EXPECT_TRUE(wait(world.session->sync(world.store)));
            world.letTimePass();
            const auto sent = world.send();
            ASSERT_EQ(sent.done.size(), 1u);
            EXPECT_EQ(sent.done.at(0).resource.href, theirs) << "as the store has it";
        }
        EXPECT_EQ(world.content(*world.store), world.content());

        // Whoever has it from the outbox goes on with that name.
        const auto changed = world.outbox.change(created, {.summary = "Changed"}).value();
        EXPECT_EQ(world.send().done.size(), 1u);
        EXPECT_EQ(summary(world.held(theirs).text), "Changed");
        EXPECT_EQ(world.content(*world.store), world.content());
        EXPECT_TRUE(world.outbox.remove(changed));
        EXPECT_EQ(world.send().done.size(), 1u);
        EXPECT_EQ(world.content(*world.store), world.content());
    }
}

TEST(OutboxPlaces, TellsANewEventFromTheOneThatMovesAwayFromItsPlace)
{
    for (const bool isRemoved : {false, true}) {
        OutboxWorld world;
        const auto held = world.held();
        EXPECT_TRUE(world.outbox.change(held, {.location = "There"}));
        EXPECT_TRUE(world.outbox.move(held, "/home/b/"));
        const auto event = EventText::read(eventText("one")).value();
        const auto created = world.outbox.create("/home/a/", event).value();
        EXPECT_TRUE(world.outbox.change(created, {.summary = "New"}));
        EXPECT_TRUE(world.outbox.change(held, {.url = "https://example.com/"}));
        if (isRemoved) {
            EXPECT_TRUE(world.outbox.remove(created));
        }
        world.send();
        EXPECT_TRUE(world.pending().empty());
        EXPECT_EQ(summary(world.there()), isRemoved ? "" : "New");
        const auto moved = EventText::read(world.there("/home/b/one.ics"));
        ASSERT_TRUE(moved);
        EXPECT_EQ(moved.value().main().summary(), "Plan");
        EXPECT_EQ(moved.value().main().location(), "There");
        EXPECT_EQ(moved.value().main().url(), "https://example.com/");
    }
}
