#include "Tessel/Session/Outbox/OutboxView.h"
#include "tests/Tessel/Session/Outbox/OutboxWorld.h"

using namespace Tessel;
using namespace Tessel::Test;

namespace {

using Shown = std::map<std::string, std::string>; ///< summaries by place, those that wait with "*"

Shown shown(const OutboxWorld& world, const std::string& calendar)
{
    Shown shown;
    const auto visited = OutboxView::of(world.store).value().visit(calendar, [&](const auto& each) {
        EXPECT_TRUE(shown.emplace(each.place, summary(each.text) + (each.waits ? "*" : "")).second)
            << each.place << " is shown twice";
        return true;
    });
    EXPECT_TRUE(visited);
    return shown;
}

} // namespace

TEST(OutboxView, ShowsOnceWhatWillBeThereHoweverItIsSpelled)
{
    OutboxWorld world;
    // The server spells the resources of a calendar otherwise than the calendar.
    for (const auto* const name : {"two", "three", "four"})
        EXPECT_TRUE(world.store->apply({.calendar = "/home/a/",
            .upserts = {{std::string("/hom%65/a/") + name + ".ics", "\"1\"", eventText(name)}}}));
    const auto held = [&](const std::string& name) {
        return world.store->resource("/home/a/", "/hom%65/a/" + name + ".ics").value().value();
    };
    EXPECT_TRUE(world.outbox.change(held("two"), {.summary = "Edited"}));
    const auto moved = world.outbox.move(held("three"), "/home/b/").value();
    EXPECT_TRUE(world.outbox.change(moved, {.summary = "Moved"}));
    EXPECT_TRUE(world.outbox.remove(held("four")));
    const auto made = world.outbox.create("/home/b/", EventText::read(eventText("five")).value());
    EXPECT_TRUE(world.outbox.change(made.value(), {.summary = "Made"}));
    // Its answer was lost, and a sync has brought it.
    EXPECT_TRUE(world.outbox.create("/home/b/", EventText::read(eventText("six")).value()));
    EXPECT_TRUE(world.store->apply(
        {.calendar = "/home/b/", .upserts = {{"/home/b/six.ics", "\"1\"", eventText("six")}}}));

    EXPECT_EQ(shown(world, "/home/a/"),
        (Shown {{"/home/a/one.ics", "Plan"}, {"/hom%65/a/two.ics", "Edited*"}}));
    EXPECT_EQ(shown(world, "/home/b"),
        (Shown {
            {moved.href, "Moved*"}, {"/home/b/five.ics", "Made*"}, {"/home/b/six.ics", "Plan*"}}));

    const auto inRange = [&](std::int64_t from, std::int64_t to) {
        int count = 0;
        const auto count1 = [&](const auto&) { return ++count > 0; };
        EXPECT_TRUE(OutboxView::of(world.store).value().visit("/home/b/", from, to, count1));
        return count;
    };
    constexpr std::int64_t day = 86'400'000;
    constexpr std::int64_t event = 1'714'989'600'000;
    EXPECT_EQ(inRange(event, event + 1), 3);
    EXPECT_EQ(inRange(event + 9 * day, event + 10 * day), 0);
}

TEST(OutboxView, ShowsWhereItIsWhatWaitsForACalendarThatIsGone)
{
    OutboxWorld world;
    for (const auto* const name : {"two", "three", "four", "five", "six"})
        EXPECT_TRUE(world.store->apply({.calendar = "/home/a/",
            .upserts = {{std::string("/home/a/") + name + ".ics", "\"1\"", eventText(name)}}}));
    EXPECT_TRUE(world.store->apply(
        {.calendar = "/home/b/", .upserts = {{"/home/b/there.ics", "\"1\"", eventText("there")}}}));
    const auto held
        = [&](const std::string& name) { return world.held("/home/a/" + name + ".ics"); };
    const auto move = [&](const Resource& resource, const std::string& calendar) {
        return world.outbox.move(resource, calendar).value();
    };
    move(held("one"), "/home/b/");
    // What is made before the move counts, what comes after it does not.
    move(world.outbox.change(held("two"), {.summary = "Edited"}).value(), "/home/b/");
    EXPECT_TRUE(world.outbox.change(move(held("three"), "/home/b/"), {.summary = "Later"}));
    move(move(held("four"), "/home/b/"), "/home/a/");
    EXPECT_TRUE(world.outbox.change(move(held("five"), "/home/b/"), {.summary = "Nowhere"}));
    EXPECT_TRUE(world.outbox.remove(held("six")));
    EXPECT_TRUE(world.outbox.create("/home/b", EventText::read(eventText("made")).value()));
    EXPECT_TRUE(world.outbox.change(world.held("/home/b/there.ics"), {.summary = "There"}));

    EXPECT_TRUE(world.store->removeCalendar("/home/b/"));
    // It was moved, and has gone with the calendar.
    EXPECT_TRUE(world.store->apply({.calendar = "/home/a/", .removed = {"/home/a/five.ics"}}));
    EXPECT_EQ(shown(world, "/home/a/"),
        (Shown {{"/home/a/one.ics", "Plan*"}, {"/home/a/two.ics", "Edited*"},
            {"/home/a/three.ics", "Plan*"}, {"/home/a/four.ics", "Plan*"}}));
    const Shown others {{"/home/b/five.ics", "Nowhere*"}, {"/home/b/made.ics", "Plan*"},
        {"/home/b/there.ics", "There*"}};
    EXPECT_EQ(shown(world, "/home/b/"), others);
    Shown listed;
    const auto view = OutboxView::of(world.store).value();
    for (const auto& each : view.withoutCalendar())
        listed.emplace(each.place, summary(each.text) + "*");
    EXPECT_EQ(listed, others);
}

TEST(OutboxView, IsReadOnceHoweverMuchWaits)
{
    OutboxWorld world;
    for (int i = 0; i < 50; ++i)
        EXPECT_TRUE(
            world.outbox.create("/home/b/", EventText::read(eventText(std::to_string(i))).value()));
    const auto view = OutboxView::of(world.store).value();
    EXPECT_TRUE(world.outbox.create("/home/b/", EventText::read(eventText("later")).value()));
    int count = 0;
    EXPECT_TRUE(view.visit("/home/b/", [&](const auto&) { return ++count < 40; }));
    EXPECT_EQ(count, 40) << "the visitor has ended the visit";
    EXPECT_TRUE(view.visit("/home/b/", [&](const auto&) { return ++count > 0; }));
    EXPECT_EQ(count, 90);
    EXPECT_EQ(OutboxView::of(nullptr).failure().kind, FailureKind::storage);
}
