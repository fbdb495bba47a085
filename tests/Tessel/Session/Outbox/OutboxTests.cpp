#include "Tessel/Session/Text/SameMeaning.h"
#include "tests/Tessel/Session/Outbox/OutboxWorld.h"

using namespace Tessel;
using namespace Tessel::Test;
using namespace std::chrono_literals;

namespace {

using Reply = FakeCalendarServer::Reply;

void answer(const World& world, const std::string& method, Reply reply)
{
    world.server->setFault(
        [method, reply](const URLRequest& request, const auto&) -> std::optional<Reply> {
            return request.method == method ? std::optional(reply) : std::nullopt;
        });
}

EventText newEvent()
{
    return EventText::read(eventText("new")).value();
}

} // namespace

TEST(Outbox, SendsWhatWaitsInOrderAndHoldsWhatTheServerHas)
{
    OutboxWorld world;
    const auto before = world.held();
    const auto created = world.outbox.create("/home/a/", newEvent()).value();
    const auto first = world.outbox.change(before, {.summary = "First"}).value();
    // The host has its resource from the store, or from the outbox.
    const auto second = world.outbox.change(before, {.location = "Here"}).value();
    const auto third = world.outbox.change(second, {.summary = "Third"}).value();
    EXPECT_EQ(summary(first.text), "First");
    EXPECT_EQ(summary(third.text), "Third");
    const auto moved = world.outbox.move(third, "/home/b/").value();
    EXPECT_EQ(moved.href, "/home/b/one.ics");
    EXPECT_TRUE(world.outbox.change(moved, {.url = "https://example.com/"}));
    EXPECT_TRUE(world.outbox.change(before, {.addedAlarms = {{15min}}}));
    EXPECT_EQ(world.pending().size(), 7u);
    EXPECT_EQ(world.held(), before) << "the store has what the server has";

    const auto sent = world.send();
    EXPECT_EQ(sent.done.size(), 7u);
    EXPECT_TRUE(world.pending().empty());
    const auto text = EventText::read(world.there("/home/b/one.ics")).value();
    EXPECT_EQ(text.main().summary(), "Third");
    EXPECT_EQ(text.main().location(), "Here");
    EXPECT_EQ(text.main().alarms().size(), 1u);
    EXPECT_EQ(world.there(), "");
    EXPECT_EQ(world.there(created.href), created.text);
    EXPECT_EQ(world.content(*world.store), world.content());
}

TEST(Outbox, JoinsWhatIsMadeOfAnEventThatWasNeverSent)
{
    OutboxWorld world;
    const auto created = world.outbox.create("/home/a/", newEvent()).value();
    EXPECT_TRUE(world.outbox.change(created, {.summary = "Joined"}));
    const auto moved = world.outbox.move(created, "/home/b/").value();
    EXPECT_TRUE(world.outbox.change(moved, {.location = "There"}));
    ASSERT_EQ(world.pending().size(), 1u);
    EXPECT_EQ(world.send().done.size(), 1u);
    EXPECT_EQ(summary(world.there("/home/b/new.ics")), "Joined");
    EXPECT_EQ(world.server->asked("PUT"), 1u);

    const auto other
        = world.outbox.create("/home/a/", EventText::read(eventText("other")).value()).value();
    EXPECT_TRUE(world.outbox.change(other, {.summary = "Joined"}));
    EXPECT_TRUE(world.outbox.remove(other));
    EXPECT_TRUE(world.pending().empty()) << "what was never created needs no removal";
    EXPECT_EQ(world.outbox.change(other, {.summary = "Late"}).failure().kind, FailureKind::missing);
    EXPECT_EQ(world.outbox.move(other, "/home/b/").failure().kind, FailureKind::missing);
    EXPECT_TRUE(world.pending().empty());

    // One that was sent is there, also for who has it from the outbox.
    EXPECT_TRUE(world.outbox.change(moved, {.summary = "Sent"}));
    EXPECT_EQ(world.send().done.size(), 1u);
    EXPECT_EQ(summary(world.there("/home/b/new.ics")), "Sent");
    EXPECT_EQ(world.outbox.create("", newEvent()).failure().kind, FailureKind::malformed);
    EXPECT_EQ(world.outbox.move(world.held(), "").failure().kind, FailureKind::malformed);
}

TEST(Outbox, ARemovalEndsWhatWaitsBeforeIt)
{
    OutboxWorld world;
    const auto held = world.held();
    EXPECT_TRUE(world.outbox.change(held, {.summary = "In vain"}));
    const auto moved = world.outbox.move(held, "/home/b/").value();
    EXPECT_TRUE(world.outbox.remove(moved));
    ASSERT_EQ(world.pending().size(), 1u);
    EXPECT_EQ(world.outbox.change(held, {.summary = "Late"}).failure().kind, FailureKind::missing);
    EXPECT_TRUE(world.outbox.remove(held));
    EXPECT_EQ(world.send().done.size(), 1u);
    EXPECT_EQ(world.server->resourceCount(), 0u);
    EXPECT_EQ(world.server->asked("PUT") + world.server->asked("MOVE"), 0u);
    EXPECT_TRUE(world.held().href.empty());
}

TEST(Outbox, ARemovalFollowsWhatMayHaveBeenSent)
{
    OutboxWorld world;
    EXPECT_TRUE(world.outbox.change(world.held(), {.summary = "Sent"}));
    answer(world, "PUT", {.status = 503});
    EXPECT_TRUE(world.send().stopped);
    EXPECT_TRUE(world.outbox.remove(world.held()));
    EXPECT_EQ(world.pending().size(), 2u);
    world.server->setFault({});
    world.letTimePass();
    EXPECT_EQ(world.send().done.size(), 2u);
    EXPECT_EQ(world.server->resourceCount(), 0u);
}

TEST(Outbox, WaitsLongerEachTimeAndAsLongAsTheServerSays)
{
    OutboxWorld world;
    EXPECT_TRUE(world.outbox.change(world.held(), {.summary = "Later"}));
    const auto pause = [&] {
        const auto sent = world.send();
        EXPECT_TRUE(sent.stopped);
        EXPECT_EQ(sent.waiting, 1u);
        EXPECT_GE(sent.nextTry, world.pending().at(0).notBefore);
        EXPECT_FALSE(world.pending().at(0).reason.empty());
        const auto pause = sent.nextTry.value_or(0) - Date().millisecondsSince1970();
        world.letTimePass();
        return pause;
    };
    answer(world, "PUT", {.isUnreachable = true});
    const auto first = pause();
    EXPECT_GT(pause(), first + 2'000);
    Reply busy {.status = 503};
    busy.headers.set("Retry-After", "3000");
    answer(world, "PUT", busy);
    EXPECT_GT(pause(), 2'900'000);

    // The network is there again: the host knows, and need not wait for any pause.
    answer(world, "PUT", {.isUnreachable = true});
    pause();
    EXPECT_TRUE(world.send().stopped);
    world.server->setFault({});
    EXPECT_EQ(world.send().done.size(), 1u);
    EXPECT_EQ(summary(world.there()), "Later");
}

TEST(Outbox, MergesWithWhatOthersWroteAndParksARealConflict)
{
    OutboxWorld world;
    const auto held = world.held();
    const auto theirs
        = EventText::read(held.text).value().apply({.summary = "Theirs"}).value().event.text();
    EXPECT_TRUE(world.outbox.change(held, {.location = "Mine"}));
    EXPECT_TRUE(world.outbox.change(held, {.summary = "Mine"}));
    EXPECT_TRUE(world.outbox.change(held, {.url = "https://example.com/"}));
    world.server->put("/home/a/one.ics", theirs);
    auto sent = world.send();
    EXPECT_EQ(sent.done.size(), 1u);
    ASSERT_EQ(sent.parked.size(), 1u);
    EXPECT_EQ(sent.waiting, 1u) << "what follows a conflict waits";
    auto parked = world.pending().at(0);
    ASSERT_TRUE(parked.texts);
    EXPECT_EQ(summary(parked.texts->mine), "Mine");
    EXPECT_EQ(summary(parked.texts->theirs), "Theirs");
    EXPECT_TRUE(world.send().done.empty());

    EXPECT_EQ(
        world.outbox.resolve("nothing", Outbox::Keep::mine).failure().kind, FailureKind::missing);
    EXPECT_TRUE(world.outbox.resolve(parked.id, Outbox::Keep::mine));
    EXPECT_EQ(world.send().done.size(), 2u);
    EXPECT_EQ(summary(world.there()), "Mine");
    const auto text = EventText::read(world.there()).value();
    EXPECT_EQ(text.main().location(), "Mine");

    // Removed there, changed here.
    for (const auto keep : {Outbox::Keep::mine, Outbox::Keep::theirs}) {
        const bool keepsMine = keep == Outbox::Keep::mine;
        const std::string mine = keepsMine ? "Once more" : "In vain";
        EXPECT_TRUE(world.outbox.change(world.held(), {.summary = mine}));
        world.server->remove("/home/a/one.ics");
        EXPECT_EQ(world.send().parked.size(), 1u);
        parked = world.pending().at(0);
        ASSERT_TRUE(parked.texts);
        EXPECT_EQ(parked.texts->theirs, "");
        EXPECT_TRUE(world.outbox.resolve(parked.id, keep));
        EXPECT_EQ(world.send().done.size(), keepsMine ? 1u : 0u);
        EXPECT_EQ(summary(world.there()), keepsMine ? mine : "");
    }
}

TEST(Outbox, MakesItsOwnTextHoweverThatBegins)
{
    const auto mine = newEvent().apply({.summary = "Mine"}).value().event.text();
    for (const std::string begin : {"BEGIN:VCALENDAR",
             "\xEF\xBB\xBF"
             "BEGIN:VCALENDAR",
             "begin:vcalendar", "\r\nBEGIN:VCALENDAR"}) {
        OutboxWorld world;
        const auto text = begin + mine.substr(15);
        EXPECT_TRUE(world.outbox.create("/home/a/", EventText::read(text).value()));
        world.server->put("/home/a/new.ics", newEvent().text());
        EXPECT_EQ(world.send().parked.size(), 1u);
        EXPECT_EQ(summary(world.there("/home/a/new.ics")), "Plan");
        EXPECT_TRUE(world.outbox.resolve(world.pending().at(0).id, Outbox::Keep::mine));
        EXPECT_EQ(world.send().done.size(), 1u) << begin;
        EXPECT_EQ(world.there("/home/a/new.ics"), text);
    }
}

TEST(Outbox, DecidesAboutWhatIsInTheWayOfAChange)
{
    OutboxWorld world;
    const auto mine = newEvent();
    world.server->put("/home/a/new.ics", mine.text());
    EXPECT_TRUE(wait(world.session->sync(world.store)));

    // A removal of what others have changed.
    EXPECT_TRUE(world.outbox.remove(world.held()));
    world.server->put("/home/a/one.ics", mine.text());
    EXPECT_EQ(world.send().parked.size(), 1u);
    EXPECT_EQ(world.there(), mine.text());
    EXPECT_TRUE(world.outbox.resolve(world.pending().at(0).id, Outbox::Keep::mine));
    EXPECT_EQ(world.send().done.size(), 1u);
    EXPECT_EQ(world.there(), "");

    // A move that is given up: what follows it is made where the event is.
    const auto held = world.held("/home/a/new.ics");
    EXPECT_TRUE(world.outbox.move(held, "/home/b/"));
    EXPECT_TRUE(world.outbox.change(held, {.location = "Here"}));
    world.server->put("/home/b/new.ics", eventText("another"));
    EXPECT_EQ(world.send().parked.size(), 1u);
    EXPECT_TRUE(world.outbox.resolve(world.pending().at(0).id, Outbox::Keep::theirs));
    EXPECT_EQ(world.send().done.size(), 1u);
    EXPECT_EQ(EventText::read(world.there("/home/a/new.ics")).value().main().location(), "Here");
}

TEST(Outbox, RefusesANewEventWhereOneIsOrWillBe)
{
    OutboxWorld world;
    const auto isRefused = [&](const std::string& uid) {
        const auto made = world.outbox.create("/home/a/", EventText::read(eventText(uid)).value());
        return !made && made.failure().kind == FailureKind::conflict;
    };
    EXPECT_TRUE(isRefused("one"));
    EXPECT_FALSE(isRefused("new"));
    EXPECT_TRUE(isRefused("new"));
    EXPECT_EQ(world.pending().size(), 1u);
    EXPECT_TRUE(world.outbox.remove(world.held()));
    EXPECT_FALSE(isRefused("one")) << "it will be free by then";
    EXPECT_EQ(world.send().done.size(), 3u);
    EXPECT_TRUE(world.outbox.move(world.held(), "/home/b/"));
    EXPECT_FALSE(isRefused("one"));
}

TEST(Outbox, KnowsAPlaceHoweverItIsSpelled)
{
    OutboxWorld world;
    const auto event = EventText::read(eventText("a@b")).value();
    const Resource held {"/hom%65/a/a@b.ics", "\"1\"", event.text()};
    EXPECT_TRUE(world.store->apply({.calendar = "/home/a/", .upserts = {held}}));
    for (const auto* const calendar : {"/home/a/", "/home/a", "/h%6Fme/a"})
        EXPECT_EQ(world.outbox.create(calendar, event).failure().kind, FailureKind::conflict);

    // What was given here is the same as what a sync has brought since.
    const auto edited = world.outbox.change({"/home/a/a%40b.ics", {}, held.text}, {.summary = "A"});
    EXPECT_EQ(edited.value().href, held.href);
    EXPECT_TRUE(world.outbox.change({"/home/a/a%40b.ics", {}, held.text}, {.location = "B"}));
    EXPECT_EQ(summary(textAfter(world.pending().at(1))), "A");
    EXPECT_TRUE(world.outbox.remove({"/home/a/a@b.ics", {}, held.text}));
    ASSERT_EQ(world.pending().size(), 1u);
    EXPECT_FALSE(world.outbox.change(held, {.summary = "Late"}));
    EXPECT_TRUE(world.outbox.create("/home/a", event)) << "it will be free by then";
}

TEST(Outbox, CreatesManyAtOnce)
{
    OutboxWorld world;
    EXPECT_TRUE(world.outbox.move(world.held(), "/home/b/"));
    std::vector<EventText> events;
    auto without = eventText("without");
    without.erase(without.find("DTSTART"), 26);
    for (const auto& text :
        {eventText("x"), without, eventText("one"), eventText("x"), eventText("y")})
        events.push_back(EventText::read(text).value());
    const auto kinds = [&](Outbox outbox, const std::string& calendar) {
        std::string kinds;
        for (const auto& made : outbox.create(calendar, events))
            kinds += (made ? made.value().href : std::string(nameOf(made.failure().kind))) + "\n";
        return kinds;
    };
    EXPECT_EQ(kinds(world.outbox, "/home/a"),
        "/home/a/x.ics\nmalformed\n/home/a/one.ics\nconflict\n/home/a/y.ics\n");
    EXPECT_EQ(kinds(world.outbox, "/home/b/"),
        "/home/b/x.ics\nmalformed\nconflict\nconflict\n/home/b/y.ics\n");
    EXPECT_EQ(world.pending().size(), 6u);
    EXPECT_EQ(world.send().done.size(), 6u);
    EXPECT_EQ(kinds(Outbox(nullptr), "/home/a/"), "storage\nstorage\nstorage\nstorage\nstorage\n");
}

TEST(Outbox, TakesNobodyElsesEventForItsOwn)
{
    // What failed once was certainly not made.
    OutboxWorld world;
    EXPECT_TRUE(world.outbox.create("/home/a/", newEvent()));
    answer(world, "PUT", {.status = 503});
    EXPECT_EQ(world.send().done.size(), 0u);
    world.server->setFault({});
    const auto theirs = newEvent().apply({.summary = "Theirs"}).value().event.text();
    world.server->put("/home/a/new.ics", theirs);
    world.letTimePass();
    EXPECT_EQ(world.send().parked.size(), 1u);
    EXPECT_EQ(world.there("/home/a/new.ics"), theirs);
    EXPECT_EQ(summary(world.pending().at(0).texts->mine), "Plan");
}

TEST(Outbox, LeavesWhatASyncHasBroughtMeanwhile)
{
    OutboxWorld world;
    EXPECT_TRUE(world.outbox.change(world.held(), {.summary = "Mine"}));
    const Resource newer {"/home/a/one.ics", "\"newer\"", eventText("one")};
    world.server->setFault([&](const URLRequest& request, const auto&) -> std::optional<Reply> {
        if (request.method == "PUT") {
            EXPECT_TRUE(world.store->apply({.calendar = "/home/a/", .upserts = {newer}}));
        }
        return std::nullopt;
    });
    EXPECT_EQ(world.send().done.size(), 1u);
    EXPECT_TRUE(world.pending().empty());
    EXPECT_EQ(world.held(), newer) << "what was written may be older";
}

TEST(Outbox, GivesEachChangeANumberOfItsOwn)
{
    OutboxWorld world;
    const auto made = world.outbox.create("/home/a/", newEvent()).value();
    EXPECT_TRUE(world.outbox.change(world.held(), {.summary = "A"}));
    const auto first = world.pending().at(0).number;
    EXPECT_EQ(world.pending().at(1).number, first + 1);
    EXPECT_TRUE(world.outbox.change(made, {.summary = "B"}));
    EXPECT_EQ(world.pending().at(0).number, first);
    EXPECT_TRUE(world.outbox.resolve(world.pending().at(1).id, Outbox::Keep::theirs));
    EXPECT_TRUE(world.outbox.change(world.held(), {.summary = "C"}));
    EXPECT_EQ(world.pending().at(1).number, first + 2) << "what was told of one is never another";
}

TEST(Outbox, GivesUpWhatWaitsAndMakesTheRestWithoutIt)
{
    OutboxWorld world;
    const auto before = world.held();
    const auto first = world.outbox.change(before, {.summary = "Given up"}).value();
    const auto second = world.outbox.change(first, {.location = "Kept"}).value();
    const auto moved = world.outbox.move(second, "/home/b/").value();
    EXPECT_TRUE(world.outbox.change(moved, {.description = "Kept too"}));
    EXPECT_TRUE(world.outbox.resolve(world.pending().at(0).id, Outbox::Keep::theirs));
    ASSERT_EQ(world.pending().size(), 3u);
    EXPECT_EQ(summary(textAfter(world.pending().back())), "Plan");
    EXPECT_EQ(world.send().done.size(), 3u);
    const auto there = EventText::read(world.there("/home/b/one.ics")).value();
    EXPECT_EQ(there.main().summary(), "Plan");
    EXPECT_EQ(there.main().location(), "Kept");
    EXPECT_EQ(there.main().description(), "Kept too");

    // With an event that is not to be, all goes that was to be done with it.
    const auto created = world.outbox.create("/home/a/", newEvent()).value();
    const auto elsewhere = world.held("/home/b/one.ics");
    EXPECT_TRUE(world.outbox.remove(elsewhere));
    EXPECT_TRUE(world.outbox.resolve(world.pending().at(0).id, Outbox::Keep::theirs));
    ASSERT_EQ(world.pending().size(), 1u);
    EXPECT_EQ(world.pending().at(0).kind, ChangeKind::remove);

    // One that may have reached the server cannot be given up unseen.
    world.server->setFault(
        [](const URLRequest&, const auto&) { return std::optional(FakeCalendarServer::Reply {}); });
    EXPECT_EQ(world.send().waiting, 1u);
    EXPECT_FALSE(world.outbox.resolve(world.pending().at(0).id, Outbox::Keep::theirs));
    EXPECT_EQ(Outbox(nullptr).remove(elsewhere).failure().kind, FailureKind::storage);
}

TEST(Outbox, KnowsWhatItHasWrittenWhateverTheServerMakesOfIt)
{
    for (const bool isOfOthersToo : {false, true}) {
        OutboxWorld world;
        EXPECT_TRUE(world.outbox.change(world.held(), {.location = "There"}));
        answer(world, "PUT", {.status = 503});
        EXPECT_TRUE(world.send().stopped);
        EXPECT_TRUE(world.outbox.remove(world.held()));
        if (isOfOthersToo) {
            const auto theirs = EventText::read(eventText("one")).value();
            world.server->put(
                "/home/a/one.ics", theirs.apply({.summary = "Theirs"}).value().event.text());
        }
        world.server->rewrite = [](std::string text) {
            return text.insert(text.find("SUMMARY"), "COMMENT:Welcome\r\n");
        };
        world.server->setFault(
            [](const URLRequest& request, const auto& apply) -> std::optional<Reply> {
                if (request.method != "PUT") return std::nullopt;
                return Reply {.status = apply().status}; // without a tag
            });
        world.letTimePass();
        const auto sent = world.send();
        EXPECT_EQ(sent.done.size(), isOfOthersToo ? 1u : 2u);
        EXPECT_EQ(sent.parked.size(), isOfOthersToo ? 1u : 0u);
        EXPECT_EQ(world.there().empty(), !isOfOthersToo);
    }
    EXPECT_TRUE(isSameButStamps("dtstamp:1\r\nA:1\r\n", "A:1\r\nDTSTAMP;X=1:2\r\n"));
    EXPECT_FALSE(isSameButStamps("DTSTAMPED:1\r\n", "DTSTAMPED:2\r\n"));
}

/// Where the event is gone, what its move wanted is made anew.
TEST(Outbox, MovesWhatWasRemovedMeanwhileByMakingIt)
{
    OutboxWorld world;
    EXPECT_TRUE(world.outbox.move(world.held(), "/home/b/"));
    world.server->remove("/home/a/one.ics");
    const auto parked = world.send().parked;
    ASSERT_EQ(parked.size(), 1u);
    EXPECT_EQ(world.pending().at(0).texts->theirs, "");
    EXPECT_TRUE(world.outbox.resolve(parked.at(0), Outbox::Keep::mine));
    EXPECT_EQ(world.send().done.size(), 1u);
    EXPECT_EQ(world.there("/home/b/one.ics"), eventText("one"));
}
