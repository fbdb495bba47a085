#include "tests/Tessel/Session/Outbox/OutboxWorld.h"

#include <atomic>
#include <set>

using namespace Tessel;
using namespace Tessel::Test;
using namespace std::chrono_literals;

// A process that ends at each of its steps in turn, before the step or after it: those that reach
// the server and those that reach the store. The next process goes on.

namespace {

using Reply = FakeCalendarServer::Reply;

/// Counts steps; one of them is the last.
class Life {
public:
    explicit Life(int steps)
        : left_(steps)
    {
    }
    /// Whether this step may still be done.
    bool goesOn() { return left_-- > 0; }
    bool hasEnded() const { return left_ < 0; }

private:
    std::atomic<int> left_;
};

/// A store as far as a process lives.
class MortalStore final : public Store {
public:
    MortalStore(std::shared_ptr<Store> actual, std::shared_ptr<Life> life)
        : actual_(std::move(actual))
        , life_(std::move(life))
    {
    }

    Result<std::vector<StoredCalendar>> calendars() override { return actual_->calendars(); }
    Outcome put(const StoredCalendar& calendar) override { return actual_->put(calendar); }
    Outcome removeCalendar(const std::string& href) override
    {
        return actual_->removeCalendar(href);
    }
    Result<std::vector<HeldTag>> tags(const std::string& calendar) override
    {
        return actual_->tags(calendar);
    }
    Result<std::optional<Resource>> resource(
        const std::string& calendar, const std::string& href) override
    {
        return actual_->resource(calendar, href);
    }
    Outcome visit(const std::string& calendar, const Visitor& visitor) override
    {
        return actual_->visit(calendar, visitor);
    }
    Outcome visit(const std::string& calendar, std::int64_t from, std::int64_t to,
        const Visitor& visitor) override
    {
        return actual_->visit(calendar, from, to, visitor);
    }
    Result<std::vector<FailedResource>> failed(const std::string& calendar) override
    {
        return actual_->failed(calendar);
    }
    Result<std::vector<PendingChange>> pending() override { return actual_->pending(); }
    Outcome applyAll(std::span<const Batch> batches) override
    {
        if (!life_->goesOn()) return dead();
        auto outcome = actual_->applyAll(batches);
        return life_->goesOn() ? outcome : dead();
    }

private:
    static Failure dead() { return {.kind = FailureKind::storage, .reason = "killed"}; }

    const std::shared_ptr<Store> actual_;
    const std::shared_ptr<Life> life_;
};

std::string seriesText()
{
    auto text = eventText("series");
    text.insert(text.find("SUMMARY"), "RRULE:FREQ=DAILY;COUNT=10\r\n");
    return text;
}

void makeChanges(OutboxWorld& world)
{
    auto& changing = world.outbox;
    const auto one = world.held();
    EXPECT_TRUE(changing.create("/home/a/", EventText::read(eventText("new")).value()));
    EXPECT_TRUE(changing.change(one, {.summary = "Changed", .addedAlarms = {{15min}}}));
    EXPECT_TRUE(changing.move(one, "/home/b/"));
    EXPECT_TRUE(changing.change(one, {.location = "There", .addedAlarms = {{5min}}}));
    EXPECT_TRUE(changing.remove(world.held("/home/a/two.ics")));
    const auto third = EventMoment::read("20240508T100000Z").value();
    EXPECT_TRUE(changing.change(world.held("/home/a/series.ics"),
        {.instance = third, .andFollowing = true, .summary = "From here"}));
    EXPECT_EQ(world.pending().size(), 7u);
}

struct KilledWorld : OutboxWorld {
    KilledWorld()
    {
        server->put("/home/a/two.ics", eventText("two"));
        server->put("/home/a/series.ics", seriesText());
        EXPECT_TRUE(wait(session->sync(store)));
        makeChanges(*this);
    }

    /// Sends as a process does that ends after so many steps; whether it has.
    bool sendAndDie(int steps) const
    {
        const auto life = std::make_shared<Life>(steps);
        server->setFault([life](const URLRequest&, const auto& apply) -> std::optional<Reply> {
            if (!life->goesOn()) return Reply {.isUnreachable = true};
            auto reply = apply();
            return life->goesOn() ? reply : Reply {};
        });
        EXPECT_TRUE(wait(session->sendOutbox(std::make_shared<MortalStore>(store, life))));
        server->setFault({});
        return life->hasEnded();
    }
};

/// What the server holds in the end, whatever the new event of a divided series is called.
std::multiset<std::string> events(const OutboxWorld& world)
{
    std::multiset<std::string> events;
    for (const auto& [place, content] : world.content()) {
        std::string event = place.substr(0, place.rfind('/'));
        for (std::size_t at = content.find('\n') + 1; at < content.size();) {
            const auto end = content.find('\n', at) + 1;
            const auto line = content.substr(at, end - at);
            const bool isOwn = line.starts_with("DTSTAMP") || line.starts_with("LAST-MODIFIED")
                || line.starts_with("CREATED") || (line.starts_with("UID") && line.size() > 20);
            if (!isOwn) event += line;
            at = end;
        }
        events.insert(std::move(event));
    }
    return events;
}

} // namespace

TEST(OutboxKill, AtNoStepIsAnythingLostOrDoubled)
{
    const KilledWorld undisturbed;
    EXPECT_EQ(undisturbed.send().done.size(), 7u);
    const auto expected = events(undisturbed);
    EXPECT_EQ(expected.size(), 4u);

    bool hasEnded = true;
    for (int steps = 0; hasEnded && steps < 500; ++steps) {
        const KilledWorld world;
        hasEnded = world.sendAndDie(steps);
        // Another time, soon after: the second life is as short.
        world.letTimePass();
        if (steps % 3 == 0) world.sendAndDie(steps / 2);
        world.letTimePass();
        const auto sent = world.send();
        EXPECT_TRUE(world.pending().empty())
            << steps << ": " << world.pending().at(0).reason << " " << sent.waiting;
        EXPECT_EQ(events(world), expected) << steps;
        EXPECT_EQ(world.content(*world.store), world.content()) << steps;
        if (HasFailure()) break;
    }
    EXPECT_FALSE(hasEnded);
}
