#include "Tessel/Session/Recurrence/Instances.h"
#include "Tessel/Session/Text/TextTree.h"
#include "tests/Tessel/Session/World.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <set>

using namespace Tessel;
using namespace Tessel::Test;

// Writes whose answers are lost, at a server that keeps no text as it comes.

namespace {

constexpr auto place = "/home/a/series.ics";
constexpr int all = -1;

const std::string series
    = "BEGIN:VCALENDAR\r\nVERSION:2.0\r\nPRODID:-//a//b//EN\r\nBEGIN:VEVENT\r\nUID:series\r\n"
      "DTSTAMP:20240101T000000Z\r\nDTSTART:20240501T100000Z\r\nDTEND:20240501T110000Z\r\n"
      "RRULE:FREQ=DAILY;COUNT=8\r\nSUMMARY:Plan\r\nCATEGORIES:A,B\r\nEND:VEVENT\r\n"
      "END:VCALENDAR\r\n";

EventMoment dayOf(int day)
{
    return EventMoment::read("202405" + std::to_string(100 + day).substr(1) + "T100000Z").value();
}

/// The properties in another order, unfolded, and one that is the server's own.
std::string reordered(const TextComponent& component)
{
    std::vector<std::string> lines {"X-SERVER:1\r\n"};
    for (const auto& line : component.lines())
        lines.push_back(line.unfolded() + "\r\n");
    std::sort(lines.begin(), lines.end());
    auto text = "BEGIN:" + component.name() + "\r\n";
    for (const auto& line : lines)
        text += line;
    for (const auto& inner : component.components())
        text += reordered(inner);
    return text + "END:" + component.name() + "\r\n";
}

std::string rewritten(const std::string& text)
{
    const auto tree = TextTree::read(text).value();
    return reordered(*tree.components().begin());
}

/// When the events of a calendar are, and what they are called.
std::multiset<std::string> agenda(Session& session, const std::shared_ptr<Store>& store)
{
    std::multiset<std::string> found;
    EXPECT_TRUE(wait(session.syncCalendar(store, "/home/a/")));
    EXPECT_TRUE(store->visit("/home/a/", [&](const Resource& resource) {
        const auto event = EventText::read(resource.text).value();
        for (const auto& each :
            instances(resource.text, 0, 4'000'000'000'000, TimeZone::UTC()).value())
            found.insert(std::to_string(each.start) + " "
                + event.part(each.component).summary().value_or("")
                + (each.isCancelled ? " cancelled" : ""));
        return true;
    }));
    return found;
}

const std::pair<const char*, EventEdit> edits[] {
    {"a property", {.summary = "New", .description = "a, b; c\nd"}},
    {"an alarm", {.alarms = {{std::chrono::minutes(15)}}}},
    {"the rule", {.rule = "FREQ=DAILY;COUNT=3"}},
    {"one instance", {.instance = dayOf(3), .summary = "New"}},
    {"one instance elsewhere", {.instance = dayOf(3), .start = dayOf(20)}},
    {"one instance away", {.instance = dayOf(3), .isRemoval = true}},
    {"all that follow", {.instance = dayOf(3), .andFollowing = true, .summary = "New"}},
    {"all that follow away", {.instance = dayOf(3), .andFollowing = true, .isRemoval = true}},
};

/// A server with the series that loses the answer of one write, or of all, or gives that status
/// instead.
struct LosingWorld : World {
    explicit LosingWorld(int lost, int status = 0)
    {
        server->rewrite = rewritten;
        server->put(place, rewritten(series));
        server->setFault([lost, status, count = std::make_shared<int>(0)](const URLRequest& request,
                             const auto& apply) -> std::optional<FakeCalendarServer::Reply> {
            if (request.method != "PUT" || (lost != all && ++*count != lost)) return std::nullopt;
            apply();
            return FakeCalendarServer::Reply {.status = status};
        });
    }
};

/// Which answer is lost, and by what status.
constexpr std::pair<int, int> losses[] {
    {0, 0}, {1, 0}, {2, 0}, {all, 0}, {1, 500}, {2, 500}, {all, 504}, {1, 502}, {2, 504}};

} // namespace

TEST(LostAnswer, OfAWriteIsFoundInTheServersWords)
{
    for (const auto& [name, edit] : edits) {
        std::multiset<std::string> expected;
        for (const auto& [lost, status] : losses) {
            SCOPED_TRACE(name + std::string(", lost ") + std::to_string(lost) + " by "
                + std::to_string(status));
            const LosingWorld world(lost, status);
            const auto changed = wait(world.session->change(world.fetch(place), edit));
            EXPECT_TRUE(changed) << changed.reason();
            const auto there = agenda(*world.session, std::make_shared<MemoryStore>());
            if (lost == 0) expected = there;
            EXPECT_EQ(there, expected);
        }
        EXPECT_FALSE(expected.empty());
    }
}

TEST(LostAnswer, OfAnOutboxIsFoundInTheServersWords)
{
    for (const auto& [name, edit] : edits) {
        std::multiset<std::string> expected;
        for (const auto& [lost, status] : losses) {
            SCOPED_TRACE(name + std::string(", lost ") + std::to_string(lost) + " by "
                + std::to_string(status));
            const LosingWorld world(lost, status);
            const auto store = std::make_shared<MemoryStore>();
            EXPECT_TRUE(wait(world.session->sync(store)));
            EXPECT_TRUE(Outbox(store).change(world.fetch(place), edit));
            const auto sent = wait(world.session->sendOutbox(store)).value();
            EXPECT_TRUE(sent.parked.empty());
            EXPECT_EQ(sent.waiting, 0u);
            const auto there = agenda(*world.session, std::make_shared<MemoryStore>());
            if (lost == 0) expected = there;
            EXPECT_EQ(there, expected);
        }
    }
}

TEST(LostAnswer, IsNoneWhereTheInstanceIsNot)
{
    const LosingWorld world(0);
    const auto held = world.fetch(place);
    const auto between = EventMoment::read("20240503T110000Z").value();
    for (const auto& instance : {between, dayOf(9)}) {
        for (const auto& edit : {EventEdit {.instance = instance, .summary = "New"},
                 EventEdit {.instance = instance, .isRemoval = true},
                 EventEdit {.instance = instance, .andFollowing = true, .summary = "New"}}) {
            EXPECT_EQ(wait(world.session->change(held, edit)).failure().kind, FailureKind::missing);
            const auto store = std::make_shared<MemoryStore>();
            EXPECT_EQ(Outbox(store).change(held, edit).failure().kind, FailureKind::missing);
        }
    }
    EXPECT_EQ(world.fetch(place).text, held.text);
}

/// Somebody else writes right after the write whose answer is lost.
TEST(LostAnswer, NeverCostsADayOfASeries)
{
    const World world;
    world.server->rewrite = rewritten;
    world.server->put(place, rewritten(series));
    int count = 0;
    world.server->setFault([&](const URLRequest& request,
                               const auto& apply) -> std::optional<FakeCalendarServer::Reply> {
        if (request.method != "PUT" || ++count != 2) return std::nullopt;
        apply();
        const auto now = EventText::read(world.server->text(place).value()).value();
        world.server->put(place, now.apply({.summary = "Theirs"}).value().event.text());
        return FakeCalendarServer::Reply {};
    });
    const auto changed = wait(world.session->change(
        world.fetch(place), {.instance = dayOf(3), .andFollowing = true, .summary = "New"}));
    EXPECT_TRUE(changed || changed.failure().isUncertain) << changed.reason();
    EXPECT_EQ(agenda(*world.session, std::make_shared<MemoryStore>()).size(), 9u);
}
