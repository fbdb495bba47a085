#include "Tessel/Session/Recurrence/Instances.h"
#include "tests/Tessel/Session/Outbox/OutboxWorld.h"

#include <functional>

using namespace Tessel;
using namespace Tessel::Test;

namespace {

using Reply = FakeCalendarServer::Reply;

const std::string place = "/home/a/series.ics";
const std::string mine = "A|A|A|B|B|B|B|B|"; ///< the days of a series that is divided
const std::string whole = "A|A|A|A|A|A|A|A|";

EventMoment day(int number)
{
    const auto digits = std::to_string(100 + number).substr(1);
    return EventMoment::read("202405" + digits + "T100000Z").value();
}

EventEdit fourthAndFollowing(const std::string& summary)
{
    return {.instance = day(9), .andFollowing = true, .summary = summary};
}

/// With a series of eight days, from the 6th.
struct SeriesWorld : OutboxWorld {
    SeriesWorld()
    {
        auto text = eventText("series");
        text.replace(text.find("SUMMARY:Plan"), 12, "RRULE:FREQ=DAILY;COUNT=8\r\nSUMMARY:A");
        server->put(place, text);
        server->remove("/home/a/one.ics");
        EXPECT_TRUE(wait(session->sync(store)));
    }

    Outcome divide()
    {
        const auto divided = outbox.change(held(place), fourthAndFollowing("B"));
        return divided ? Outcome() : divided.failure();
    }
    /// As another client edits what the server holds.
    void editThere(const EventEdit& edit) const
    {
        const auto now = EventText::read(there(place)).value();
        server->put(place, now.apply(edit).value().event.text());
    }
    Outcome giveUp(std::size_t number)
    {
        return outbox.resolve(pending().at(number).id, Outbox::Keep::theirs);
    }
    void refuse(const std::string& method, const std::string& exceptAt, int status) const
    {
        server->setFault([=](const URLRequest& request, const auto&) -> std::optional<Reply> {
            const bool isRefused = request.method == method && !request.url().ends_with(exceptAt);
            return isRefused ? std::optional(Reply {.status = status}) : std::nullopt;
        });
    }

    /// What the server has on each day, in their order; of a day in another place where it is.
    std::string days() const
    {
        std::multimap<std::int64_t, std::string> found;
        for (const auto& [where, content] : content()) {
            const auto event = EventText::read(content.substr(content.find('\n') + 1)).value();
            const auto all = instances(event.tree(), 0, 2'000'000'000'000, TimeZone::UTC());
            for (const auto& each : all.value())
                found.emplace(each.start, event.part(each.component).summary().value_or(""));
        }
        std::string days;
        for (const auto& [start, summary] : found)
            days += summary + "|";
        return days;
    }
};

} // namespace

TEST(OutboxDivision, KeepsItsDaysWhenAnotherChangeIsGivenUp)
{
    for (const bool isParked : {true, false}) {
        SeriesWorld world;
        EXPECT_TRUE(world.outbox.change(world.held(place), {.instance = day(7), .summary = "E"}));
        EXPECT_TRUE(world.divide());
        if (isParked) {
            world.editThere({.instance = day(7), .summary = "T"});
            EXPECT_EQ(world.send().parked.size(), 1u);
        }
        EXPECT_TRUE(world.giveUp(0));
        EXPECT_EQ(world.send().done.size(), 2u);
        EXPECT_EQ(world.days(), isParked ? "A|T|A|B|B|B|B|B|" : mine);
    }

    // A move; the second part is nonetheless made after the first.
    SeriesWorld world;
    const auto moved = world.outbox.move(world.held(place), "/home/b/").value();
    EXPECT_TRUE(world.outbox.change(moved, fourthAndFollowing("B")));
    EXPECT_TRUE(world.giveUp(0));
    world.editThere({.instance = day(9), .summary = "T"});
    EXPECT_EQ(world.send().parked.size(), 1u);
    EXPECT_EQ(world.days(), "A|A|A|T|A|A|A|A|");
    EXPECT_TRUE(world.giveUp(0));
    EXPECT_TRUE(world.pending().empty());
}

TEST(OutboxDivision, IsGivenUpWholeWithEitherPart)
{
    for (const std::size_t number : {0, 1, 2}) {
        SeriesWorld world;
        EXPECT_TRUE(world.divide());
        const auto second = world.pending().at(1);
        const auto again
            = world.outbox.change({second.href, {}, second.content}, {.location = "There"});
        EXPECT_TRUE(again);
        EXPECT_TRUE(world.outbox.change(
            again.value(), {.instance = day(11), .andFollowing = true, .summary = "C"}));
        ASSERT_EQ(world.pending().size(), 3u);
        EXPECT_TRUE(world.giveUp(number));
        EXPECT_TRUE(world.pending().empty()) << number;
        EXPECT_TRUE(world.send().done.empty());
        EXPECT_EQ(world.days(), whole);
    }
}

TEST(OutboxDivision, KeepsTheDaysOfASeriesThatWasNeverSent)
{
    SeriesWorld world;
    auto text = world.held(place).text;
    text.replace(text.find("UID:series"), 10, "UID:own");
    world.server->remove(place);
    const auto made = world.outbox.create("/home/a/", EventText::read(text).value()).value();
    EXPECT_TRUE(world.outbox.change(made, fourthAndFollowing("B")));
    ASSERT_EQ(world.pending().size(), 2u);
    EXPECT_EQ(world.giveUp(1).failure().kind, FailureKind::conflict);
    EXPECT_EQ(world.send().done.size(), 2u);
    EXPECT_EQ(world.days(), mine);

    // With an event that is not to be, all goes that was made of it.
    text.replace(text.find("UID:own"), 7, "UID:other");
    const auto other = world.outbox.create("/home/a/", EventText::read(text).value()).value();
    EXPECT_TRUE(world.outbox.change(other, fourthAndFollowing("B")));
    EXPECT_TRUE(world.giveUp(0));
    EXPECT_TRUE(world.pending().empty());
}

TEST(OutboxDivision, LosesNoDaysWhoseSeriesIsCutAlready)
{
    for (const int status : {403, 503}) {
        SeriesWorld world;
        EXPECT_TRUE(world.divide());
        world.refuse("PUT", place, status);
        EXPECT_EQ(world.send().done.size(), 1u);
        EXPECT_EQ(world.days(), "A|A|A|");
        EXPECT_EQ(world.giveUp(0).failure().kind, FailureKind::conflict);
        ASSERT_EQ(world.pending().size(), 1u);
        world.server->setFault({});
        const auto second = world.pending().at(0);
        if (second.state == ChangeState::parked) {
            EXPECT_TRUE(world.outbox.resolve(second.id, Outbox::Keep::mine));
        }
        world.letTimePass();
        EXPECT_EQ(world.send().done.size(), 1u);
        EXPECT_EQ(world.days(), mine);
    }

    // Who does not want the days says so.
    SeriesWorld world;
    EXPECT_TRUE(world.divide());
    world.refuse("PUT", place, 413);
    EXPECT_EQ(world.send().parked.size(), 1u);
    const auto second = world.pending().at(0);
    EXPECT_TRUE(world.outbox.remove({second.href, {}, second.content}));
    EXPECT_TRUE(world.pending().empty());
}

/// Whoever gives up the first part of a series that was divided keeps the other days.
TEST(OutboxDivision, KeepsTheRestOfASeriesThatMayBeDivided)
{
    for (const bool isDivided : {false, true}) {
        SeriesWorld world;
        EXPECT_TRUE(world.divide());
        if (isDivided) {
            world.server->setFault(
                [isOver = std::make_shared<bool>(false)](
                    const URLRequest& request, const auto& apply) -> std::optional<Reply> {
                    if (request.method == "PUT" && !*isOver) apply();
                    *isOver = true;
                    return Reply {};
                });
            EXPECT_TRUE(world.send().done.empty());
            EXPECT_EQ(world.giveUp(1).failure().kind, FailureKind::missing) << "it may be cut";
            world.server->setFault({});
            world.letTimePass();
        }
        world.server->remove(place);
        ASSERT_EQ(world.send().parked.size(), 1u);
        if (isDivided) {
            EXPECT_EQ(world.giveUp(1).failure().kind, FailureKind::conflict);
        }
        EXPECT_TRUE(world.giveUp(0));
        EXPECT_EQ(world.pending().size(), isDivided ? 1u : 0u);
        EXPECT_EQ(world.send().done.size(), isDivided ? 1u : 0u);
        EXPECT_EQ(world.days(), isDivided ? "B|B|B|B|B|" : "");
    }
}

TEST(OutboxDivision, WritesOverNothingThatOthersMadeOfTheDays)
{
    struct Theirs {
        const char* what;
        EventEdit edit;
        bool isInTheWay;
    };
    const Theirs all[] = {
        {"another day", {.instance = day(7), .summary = "T"}, false},
        {"an earlier day taken away", {.instance = day(8), .isRemoval = true}, false},
        {"the day", {.instance = day(9), .location = "There"}, true},
        {"a later day", {.instance = day(12), .summary = "T"}, true},
        {"a later day taken away", {.instance = day(12), .isRemoval = true}, true},
        {"all days", {.description = "There"}, true},
        {"an alarm of all days", {.addedAlarms = {{std::chrono::minutes(15)}}}, true},
    };
    for (const auto& theirs : all) {
        for (const bool isAfterGivingUp : {false, true}) {
            SeriesWorld world;
            if (isAfterGivingUp) {
                EXPECT_TRUE(
                    world.outbox.change(world.held(place), {.instance = day(6), .summary = "E"}));
                world.editThere({.instance = day(6), .summary = "T"});
            }
            EXPECT_TRUE(world.divide());
            world.editThere(theirs.edit);
            const auto before = world.days();
            if (isAfterGivingUp) {
                EXPECT_EQ(world.send().parked.size(), 1u);
                EXPECT_TRUE(world.giveUp(0));
            }
            const auto sent = world.send();
            EXPECT_EQ(sent.done.size(), theirs.isInTheWay ? 0u : 2u) << theirs.what;
            EXPECT_EQ(sent.parked.size(), theirs.isInTheWay ? 1u : 0u) << theirs.what;
            if (!theirs.isInTheWay) continue;
            EXPECT_EQ(world.days(), before) << theirs.what;
            EXPECT_TRUE(world.giveUp(0));
            EXPECT_TRUE(world.pending().empty());
        }
    }
}
