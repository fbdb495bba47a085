#include "tests/Tessel/Session/Outbox/OutboxWorld.h"

using namespace Tessel;
using namespace Tessel::Test;

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
