#include "Tessel/Session/Store/MemoryStore.h"
#include "tests/Tessel/Session/Store/StoreSnapshot.h"

#include <gtest/gtest.h>

using namespace Tessel;
using namespace Tessel::Test;

namespace {

constexpr std::int64_t day = 86'400'000;
constexpr auto home = "/home/work/";

std::string event(const std::string& lines)
{
    return "BEGIN:VCALENDAR\r\nBEGIN:VEVENT\r\nUID:1\r\n" + lines
        + "\r\nEND:VEVENT\r\nEND:VCALENDAR\r\n";
}

/// One suite over both stores.
class Stores : public testing::TestWithParam<bool> {
protected:
    Stores()
    {
        if (GetParam()) {
            store_ = openStore(directory_.path() / "store");
        } else {
            store_ = std::make_shared<MemoryStore>();
        }
    }

    /// Applies what has to work.
    void apply(const Batch& batch)
    {
        const auto outcome = store_->apply(batch);
        ASSERT_TRUE(outcome) << outcome.reason();
    }

    std::vector<std::string> visited(std::int64_t from, std::int64_t to)
    {
        std::vector<std::string> hrefs;
        EXPECT_TRUE(store_->visit(home, from, to, [&](const Resource& resource) {
            hrefs.push_back(resource.href);
            return true;
        }));
        std::sort(hrefs.begin(), hrefs.end());
        return hrefs;
    }

    TemporaryDirectory directory_;
    std::shared_ptr<Store> store_;
};

} // namespace

TEST_P(Stores, ListCalendarsInTheirOrderAndKeepMarksWhenTheyAreListedAnew)
{
    const StoredCalendar first {.href = home,
        .displayName = "Work",
        .description = "",
        .color = "#FF2968FF",
        .order = "2",
        .timeZone = "BEGIN:VCALENDAR\r\n",
        .components = {"VEVENT", "VTODO"},
        .isWritable = false,
        .missing = {"no sync-token, so each sync compares all tags", "no ctag"},
        .mark = {"never taken from here", ""}};
    ASSERT_TRUE(store_->put(first));
    ASSERT_TRUE(store_->put({.href = "/home/another/"}));
    apply({.calendar = home, .upserts = {{"a", "1", "x"}}, .mark = SyncMark {"c1", "s1"}});

    auto listed = first;
    listed.mark = {"c1", "s1"};
    EXPECT_EQ(store_->calendars().value(),
        (std::vector<StoredCalendar> {listed, {.href = "/home/another/"}}));

    ASSERT_TRUE(store_->put({.href = home, .displayName = "Renamed"}));
    EXPECT_EQ(store_->calendars().value()[0],
        (StoredCalendar {.href = home, .displayName = "Renamed", .mark = {"c1", "s1"}}));
    EXPECT_EQ(store_->tags(home).value().size(), 1U);

    ASSERT_TRUE(store_->removeCalendar(home));
    ASSERT_TRUE(store_->removeCalendar(home));
    ASSERT_TRUE(store_->put({.href = home}));
    EXPECT_EQ(store_->calendars().value()[1], StoredCalendar {.href = home}) << "it came last";
    EXPECT_TRUE(store_->tags(home).value().empty());
    EXPECT_TRUE(store_->failed(home).value().empty());
}

TEST_P(Stores, HoldWhatBatchesBring)
{
    using namespace std::string_literals;
    const Resource odd {"/h/%20 é", "\"\"", "NUL \0, no UTF-8 \xff\r\n"s};
    ASSERT_TRUE(store_->put({.href = home}));
    apply({.calendar = home,
        .upserts = {{"b", "1", "one"}, odd, {"c", "1", ""}},
        .failed = {{"d", "404"}, {"b", "fails after all"}}});
    EXPECT_EQ(store_->tags(home).value(),
        (std::vector<HeldTag> {{odd.href, odd.tag}, {"b", "1"}, {"c", "1"}}));
    EXPECT_EQ(store_->resource(home, odd.href).value(), odd);
    EXPECT_EQ(store_->resource(home, "c").value(), (Resource {"c", "1", ""}));
    EXPECT_EQ(store_->resource(home, "d").value(), std::nullopt);
    EXPECT_EQ(store_->resource("/elsewhere/", "b").value(), std::nullopt);
    EXPECT_EQ(store_->failed(home).value(),
        (std::vector<FailedResource> {{"b", "fails after all"}, {"d", "404"}}));

    apply({.calendar = home,
        .upserts = {{"b", "2", "two"}, {"b", "3", "three"}, {"c", "2", "back"}},
        .removed = {"c", "d", "never held"},
        .mark = SyncMark {"", "s"}});
    EXPECT_EQ(store_->resource(home, "b").value(), (Resource {"b", "3", "three"}));
    EXPECT_EQ(store_->resource(home, "c").value(), (Resource {"c", "2", "back"}));
    EXPECT_TRUE(store_->failed(home).value().empty());

    std::vector<std::string> hrefs;
    ASSERT_TRUE(store_->visit(home, [&](const Resource& resource) {
        hrefs.push_back(resource.href);
        EXPECT_TRUE(store_->resource(home, "b")) << "a visitor may call the store";
        return hrefs.size() < 2;
    }));
    EXPECT_EQ(hrefs, (std::vector<std::string> {odd.href, "b"}));
}

TEST_P(Stores, FindTheResourcesOfARange)
{
    ASSERT_TRUE(store_->put({.href = home}));
    apply({.calendar = home,
        .upserts = {{"10th", "", event("DTSTART:19700110T090000Z\r\nDTEND:19700110T100000Z")},
            {"20th", "", event("DTSTART;VALUE=DATE:19700120")},
            {"daily", "", event("DTSTART:19700105T090000Z\r\nRRULE:FREQ=DAILY")},
            {"ends", "", event("DTSTART:19700105T090000\r\nRRULE:FREQ=DAILY;COUNT=3")},
            {"unreadable", "", "BEGIN:VCALENDAR\r\n"},
            {"task", "",
                "BEGIN:VCALENDAR\r\nBEGIN:VTODO\r\nUID:1\r\nEND:VTODO\r\nEND:VCALENDAR\r\n"}}});
    EXPECT_EQ(visited(0, day), (std::vector<std::string> {"unreadable"}));
    EXPECT_EQ(
        visited(5 * day, 6 * day), (std::vector<std::string> {"daily", "ends", "unreadable"}));
    EXPECT_EQ(
        visited(9 * day, 10 * day), (std::vector<std::string> {"10th", "daily", "unreadable"}));
    EXPECT_EQ(visited(9000 * day, 9001 * day), (std::vector<std::string> {"daily", "unreadable"}));
    apply({.calendar = home, .upserts = {{"daily", "", event("DTSTART:19700105T090000Z")}}});
    EXPECT_EQ(visited(19 * day, 20 * day), (std::vector<std::string> {"20th", "unreadable"}));
}

TEST_P(Stores, KeepTheOutboxInItsOrder)
{
    PendingChange change {.id = "a",
        .kind = ChangeKind::move,
        .state = ChangeState::parked,
        .calendar = home,
        .href = "/x",
        .destination = "/y/",
        .uid = "u",
        .baseTag = "\"1\"",
        .baseText = "before",
        .content = "after",
        .attempts = 3,
        .notBefore = 1'700'000'000'000,
        .reason = "412",
        .texts = BothTexts {"mine", ""}};
    apply({.pending = {change, {.id = "b", .kind = ChangeKind::remove}}});
    change.attempts = 4;
    change.revision = 1;
    change.texts.reset();
    apply({.pending = {change, {.id = "c"}}, .settled = {{"b", 1}}});
    const auto held = store_->pending().value();
    ASSERT_EQ(held.size(), 2U);
    change.revision = 2;
    EXPECT_EQ(snapshotOf(held[0]), snapshotOf(change));
    EXPECT_EQ(held[1].id, "c");
}

TEST_P(Stores, DoNothingOfABatchThatTheyRefuse)
{
    ASSERT_TRUE(store_->put({.href = home}));
    apply({.calendar = home,
        .upserts = {{"a", "1", "x"}},
        .mark = SyncMark {"", "s1"},
        .pending = {{.id = "p"}}});
    const auto before = snapshotOf(*store_);
    const Batch good {.calendar = home,
        .upserts = {{"b", "1", "y"}},
        .removed = {"a"},
        .failed = {{"c", "404"}},
        .expected = {{"a", "1"}, {"b", ""}},
        .basedOn = SyncMark {"", "s1"},
        .mark = SyncMark {"", "s2"},
        .pending = {{.id = "q"}, {.id = "p", .revision = 1, .state = ChangeState::sending}}};
    const struct {
        const char* name;
        Batch batch;
        FailureKind kind;
    } cases[] {
        {"no such calendar", {.calendar = "/gone/"}, FailureKind::missing},
        {"resources of no calendar", {.removed = {"a"}}, FailureKind::missing},
        {"another mark", {.calendar = home, .basedOn = SyncMark {}}, FailureKind::changed},
        {"a mark that the batch before it has set", good, FailureKind::changed},
        {"another tag", {.calendar = home, .expected = {{"a", "2"}}}, FailureKind::changed},
        {"one that is held", {.calendar = home, .expected = {{"a", ""}}}, FailureKind::changed},
        {"one that is not", {.calendar = home, .expected = {{"b", "1"}}}, FailureKind::changed},
        {"an id that is taken", {.pending = {{.id = "p"}}}, FailureKind::changed},
        {"an older revision", {.pending = {{.id = "p", .revision = 1}}}, FailureKind::changed},
        {"nothing to change", {.pending = {{.id = "z", .revision = 1}}}, FailureKind::changed},
        {"settling an older revision", {.settled = {{"p", 1}}}, FailureKind::changed},
        {"settling twice", {.settled = {{"p", 2}, {"p", 2}}}, FailureKind::changed},
        {"settling nothing", {.settled = {{"z", 0}}}, FailureKind::changed},
    };
    for (const auto& [name, batch, kind] : cases) {
        const Batch both[] {good, batch};
        const auto outcome = store_->applyAll(both);
        ASSERT_FALSE(outcome) << name;
        EXPECT_EQ(outcome.failure().kind, kind) << name << ": " << outcome.reason();
        EXPECT_EQ(snapshotOf(*store_), before) << name;
    }
    apply(good);
    apply({.settled = {{"p", 2}, {"q", 1}}});
    EXPECT_NE(snapshotOf(*store_), before);
}

INSTANTIATE_TEST_SUITE_P(
    , Stores, testing::Bool(), [](const auto& info) { return info.param ? "SQLite" : "Memory"; });
