#include "tests/apps/tessel/ToolWorld.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>

using namespace Tessel;
using namespace Tessel::Test;
using Reply = FakeCalendarServer::Reply;

namespace {

constexpr const char* start = "DTSTART:20270301T100000Z\r\n";

std::string planned(const std::string& uid, const std::string& summary)
{
    return eventWith(uid, start + ("SUMMARY:" + summary + "\r\n"));
}

/// The fault of one method: this answer instead of what was asked.
FakeCalendarServer::Fault answering(std::string method, Reply reply)
{
    return [method, reply](const URLRequest& request, const auto&) {
        return request.method == method ? std::optional(reply) : std::nullopt;
    };
}

const std::string series = eventWith("daily",
    "DTSTART;TZID=Europe/Berlin:20270405T090000\r\nDTEND;TZID=Europe/Berlin:20270405T100000\r\n"
    "RRULE:FREQ=DAILY;COUNT=4\r\nSUMMARY:Course\r\nX-KEPT;A=b:as it\r\n  was\r\nEND:VEVENT\r\n"
    "BEGIN:VEVENT\r\nUID:daily\r\nDTSTAMP:20240101T000000Z\r\n"
    "RECURRENCE-ID;TZID=Europe/Berlin:20270406T090000\r\n"
    "DTSTART;TZID=Europe/Berlin:20270406T140000\r\nSUMMARY:Course\\, later\r\nEND:VEVENT\r\n"
    "BEGIN:VEVENT\r\nUID:daily\r\nDTSTAMP:20240101T000000Z\r\n"
    "RECURRENCE-ID;TZID=Europe/Berlin:20270407T090000\r\n"
    "DTSTART;TZID=Europe/Berlin:20270407T090000\r\nSTATUS:CANCELLED\r\nSUMMARY:Course\r\n");

} // namespace

TEST(Tool, SaysNoWhereTheServerDoes)
{
    const std::string refusing207
        = "<d:multistatus xmlns:d=\"DAV:\"><d:response><d:href>/home/a/</d:href><d:propstat>"
          "<d:prop><d:displayname/></d:prop><d:status>HTTP/1.1 403 Forbidden</d:status>"
          "</d:propstat></d:response></d:multistatus>";
    const struct {
        Words command;
        FakeCalendarServer::Fault fault;
        int status;
        Words says;
    } cases[] {
        {{"calendars", "set", "a", "--name", "New"}, answering("PROPPATCH", {207, refusing207}), 1,
            {"403"}},
        {{"share", "a", "bob@example.com"}, answering("POST", {200}), 1, {"sharing", "!shared a"}},
        {{"event", "create", "a", "--summary", "S", "--start", "2027-03-01"},
            answering("PUT", {403, "no room \x1b[2J here"}), 1,
            {"403", "no room", "!\x1b", "!created S"}},
        {{"calendars"}, answering("PROPFIND", {401}), 1, {"401", "password"}},
        {{"calendars"}, answering("PROPFIND", {404}), 1, {"CalDAV"}},
        {{"--timeout", "1", "sync"}, answering("PROPFIND", {}), 3, {"PROPFIND", "--timeout"}},
        {{"event", "show", "nothing"}, {}, 1, {"no event nothing"}},
        {{"calendars", "delete", "c"}, {}, 1, {"no calendar c", "/home/a/"}},
        {{"invitations", "accept", "7"}, {}, 1, {"invitation"}},
    };
    for (const auto& [command, fault, status, says] : cases) {
        const ToolWorld world;
        world.server->setFault(fault);
        const auto run = world.run(command);
        EXPECT_EQ(run.status, status) << testing::PrintToString(command) << run.all();
        expectParts(run.all(), says);
        EXPECT_EQ(world.server->asked("POST"), 0U);
        const auto lines = std::count(run.err.begin(), run.err.end(), '\n');
        EXPECT_EQ(lines, 1) << run.err;
    }
}

TEST(Tool, NamesWhatItCouldNotBringAndEndsWith5)
{
    const ToolWorld world;
    world.server->put("/home/a/bad.ics", planned("bad", "B\x01"));
    world.server->put("/home/a/good.ics", planned("good", "Good"));
    world.server->put("/home/a/gone.ics", planned("gone", "Gone"));
    world.server->put("/home/a/torn.ics", "BEGIN:VCALENDAR\r\nBEGIN:VEVENT\r\nUID:torn\r\n");
    world.server->setFault([&](const URLRequest& request, const auto& apply) {
        auto reply = std::optional<Reply>();
        if (request.method == "REPORT"
            && request.body.view().find("multiget") != std::string_view::npos) {
            world.server->remove("/home/a/gone.ics");
            reply = apply();
        }
        return reply;
    });
    for (const auto& command : {Words {"sync"}, {"events"}, {"export", "a"},
             {"agenda", "--from", "2027-03-01", "--to", "2027-03-01"}}) {
        const auto run = world.run(command);
        EXPECT_EQ(run.status, 5) << run.all();
        expectParts(run.all(), {"Good", "bad.ics"});
        if (command.front() != "sync") expectParts(run.all(), {"torn.ics"});
    }
}

TEST(Tool, NamesWhatCannotBePlacedInTime)
{
    const ToolWorld world;
    world.server->put("/home/a/good.ics", planned("good", "Good"));
    world.server->put("/home/a/none.ics", eventWith("none", "SUMMARY:None\r\n"));
    world.server->put("/home/a/no-day.ics",
        eventWith("no-day", "DTSTART;VALUE=DATE:20270230\r\nSUMMARY:No day\r\n"));
    EXPECT_EQ(world.run({"sync"}).status, 0);
    for (const auto& command : {Words {"events"}, {"events", "--from", "2027-03-01"},
             {"agenda", "a"}, {"agenda", "--from", "2027-03-01", "--to", "2027-03-01"}}) {
        const auto run = world.run(command);
        EXPECT_EQ(run.status, 5) << run.all();
        for (const auto* place : {"none.ics: None: ", "no-day.ics: No day: "})
            EXPECT_EQ(count(run.err, place), 1U) << place << run.err;
        EXPECT_FALSE(has(run.err, "good.ics")) << run.err;
    }
    EXPECT_EQ(world.run({"event", "show", "None"}).status, 0);
}

TEST(Tool, NamesByItsTitleWhatIsGone)
{
    for (const bool hasSyncTokens : {true, false}) {
        const ToolWorld world;
        world.server->hasSyncTokens = hasSyncTokens;
        world.server->put("/home/a/one.ics", planned("one", "Plan"));
        EXPECT_EQ(world.run({"sync"}).status, 0);
        world.server->remove("/home/a/one.ics");
        expectParts(world.run({"sync"}).out, {"gone     Plan\n", "!one.ics"});
    }
}

TEST(Tool, HoldsAndShowsASeriesWhole)
{
    const ToolWorld world;
    world.server->put("/home/a/series.ics", series);
    const auto agenda = world.run({"agenda", "--from", "2027-04-05", "--to", "2027-04-08"});
    EXPECT_EQ(agenda.out,
        "Monday, 5 April 2027\n  09:00–10:00  Course  [/home/a/]\n\n"
        "Tuesday, 6 April 2027\n  14:00  Course, later  [/home/a/]\n\n"
        "Wednesday, 7 April 2027\n  09:00  Course (cancelled)  [/home/a/]\n\n"
        "Thursday, 8 April 2027\n  09:00–10:00  Course  [/home/a/]\n");
    const auto text = world.run({"export", "a"}).out;
    const auto components = series.substr(series.find("BEGIN:VEVENT"));
    EXPECT_NE(text.find(components), text.npos) << text;

    // One day of it is changed, and every other byte is as it was.
    EXPECT_EQ(
        world.run({"event", "edit", "Course", "--instance", "2027-04-08", "--location", "Room 4"})
            .status,
        0);
    auto now = *world.server->text("/home/a/series.ics");
    const auto added = now.find("BEGIN:VEVENT", now.rfind("STATUS:CANCELLED"));
    expectParts(
        now.substr(added), {"RECURRENCE-ID;TZID=Europe/Berlin:20270408", "LOCATION:Room 4"});
    EXPECT_EQ(now.erase(added, now.find("END:VCALENDAR") - added), series);
    for (const auto& [day, status] : {std::pair("2027-04-05", 0), {"2027-04-12", 1}})
        EXPECT_EQ(world.run({"event", "delete", "Course", "--instance", day}).status, status);
}

TEST(Tool, LeavesNoSeriesWithoutDays)
{
    const ToolWorld world;
    const std::string days = "DTSTART:20270405T090000Z\r\nRRULE:FREQ=DAILY;COUNT=2\r\n";
    world.server->put("/home/a/f.ics", eventWith("f", days + "SUMMARY:F2\r\n"));
    const auto remove = [&](const char* day, bool isFollowing) {
        Words words {"event", "delete", "F2", "--instance", day};
        if (isFollowing) words.emplace_back("--following");
        return world.run(words);
    };
    const auto all = remove("2027-04-05", true);
    EXPECT_EQ(all.status, 2) << all.all();
    expectParts(all.err, {"`tessel event delete F2`", "!resource"});
    EXPECT_EQ(remove("2027-04-05", false).status, 0);
    // All that are left are all.
    EXPECT_EQ(remove("2027-04-06", true).status, 2);
    EXPECT_EQ(world.server->resourceCount(), 1U);
    expectParts(remove("2027-04-06", false).out, {"deleted 2027-04-06, the last day of F2 in"});
    EXPECT_EQ(world.server->resourceCount(), 0U);
}

TEST(Tool, UninvitesNobodyWhoWasNotInvited)
{
    const ToolWorld world;
    world.server->put("/home/a/s.ics",
        eventWith("s",
            "DTSTART:20270405T090000Z\r\nRRULE:FREQ=DAILY;COUNT=3\r\nSUMMARY:Course\r\n"
            "ORGANIZER:mailto:alice@example.com\r\nATTENDEE:mailto:bob@example.com\r\n"));
    const struct {
        Words options;
        int status;
    } cases[] {
        {{"--uninvite", "carol@example.com", "--location", "Room 4"}, 1},
        {{"--instance", "2027-04-06", "--uninvite", "carol@example.com"}, 1},
        {{"--instance", "2027-04-06", "--uninvite", "Bob@Example.com"}, 0},
        {{"--instance", "2027-04-06", "--uninvite", "bob@example.com"}, 1},
        {{"--instance", "2027-04-07", "--following", "--uninvite", "bob@example.com"}, 0},
    };
    for (const auto& [options, status] : cases) {
        const auto before = world.server->asked("PUT");
        Words words {"event", "edit", "/home/a/s.ics"};
        words.insert(words.end(), options.begin(), options.end());
        const auto run = world.run(words);
        EXPECT_EQ(run.status, status) << testing::PrintToString(options) << run.all();
        EXPECT_EQ(world.server->asked("PUT") > before, status == 0);
        if (status == 1) expectParts(run.all(), {"is not invited", "!changed", "!Room"});
    }
}

TEST(Tool, MakesASecondEditAfterItsOwnFirst)
{
    const ToolWorld world;
    EXPECT_EQ(world
                  .run({"event", "create", "a", "--summary", "Lunch", "--start", "2027-03-01T12:00",
                      "--duration", "45m", "--repeat", "weekly", "--until", "2027-04-01", "--alarm",
                      "15m", "--category", "Food"})
                  .status,
        0);
    for (const auto& edit : {Words {"--summary", "Late lunch"}, {"--start", "2027-03-01T13:00"},
             {"--location", "Canteen"}, {"--clear", "alarms"}}) {
        Words words {"event", "edit", "unch"};
        words[2] = edit[1] == "Late lunch" ? "Lunch" : "Late lunch";
        words.insert(words.end(), edit.begin(), edit.end());
        const auto run = world.run(words);
        EXPECT_EQ(run.status, 0) << run.all();
    }
    const auto shown = world.run({"event", "show", "Late lunch", "--text"}).out;
    expectParts(shown,
        {"DTSTART;TZID=Europe/Berlin:20270301T130000", "DTEND;TZID=Europe/Berlin:20270301T134500",
            "LOCATION:Canteen", "CATEGORIES:Food", "RRULE:FREQ=WEEKLY;UNTIL=20270401T2",
            "!VALARM"});
}

TEST(Tool, TellsBothVersionsOfAConflict)
{
    const ToolWorld world;
    world.server->put("/home/a/one.ics", planned("one", "Plan"));
    EXPECT_EQ(world.run({"sync"}).status, 0);
    world.server->put("/home/a/one.ics", planned("one", "Theirs"));
    const auto run = world.run({"event", "edit", "Plan", "--summary", "Mine"});
    EXPECT_EQ(run.status, 1);
    expectParts(run.err, {"yours: summary: Mine\n", "theirs: summary: Theirs\n", "`tessel sync`"});
    EXPECT_EQ(*world.server->text("/home/a/one.ics"), planned("one", "Theirs"));
    EXPECT_EQ(world.run({"event", "edit", "Plan", "--location", "Room 4"}).status, 0);
    expectParts(*world.server->text("/home/a/one.ics"), {"SUMMARY:Theirs", "LOCATION:Room 4"});
}

TEST(Tool, SendsLaterWhatWasChangedWithoutTheServer)
{
    const ToolWorld world;
    world.server->put("/home/a/one.ics", planned("one", "Plan"));
    EXPECT_EQ(world.run({"sync"}).status, 0);
    for (const auto& command : {Words {"event", "edit", "Plan", "--summary", "Later"},
             {"event", "create", "a", "--summary", "New", "--start", "2027-03-02"},
             {"event", "create", "b", "--summary", "Dropped", "--start", "2027-03-02"},
             {"event", "edit", "Dropped", "--location", "x"}, {"event", "move", "New", "b"}}) {
        auto words = command;
        words.insert(words.begin(), "--offline");
        EXPECT_EQ(world.run(words).status, 0) << world.run(words).all();
    }
    expectParts(
        world.run({"events"}).out, {"Later (waits", "New (waits", "Dropped (waits", "!Plan"});
    const auto pending = world.run({"pending"}).out;
    expectParts(pending, {"1  change Plan", "2  create New", "3  create Dropped"});
    EXPECT_EQ(world.run({"account", "remove", "alice"}).status, 2);
    EXPECT_EQ(world.run({"pending", "drop", "3"}).status, 0);
    EXPECT_EQ(world.server->asked("PUT"), 0U);

    const auto sent = world.run({"sync"});
    EXPECT_EQ(sent.status, 0) << sent.all();
    expectParts(sent.out, {"sent: change Later", "sent: create New"});
    EXPECT_EQ(world.server->resourceCount(), 2U);
    expectParts(world.run({"--json", "events", "b"}).out,
        {"\"summary\":\"New\"", "\"href\":\"/home/b/", "!Later"});
    expectParts(world.run({"pending"}).out, {"Nothing waits"});
}

TEST(Tool, ImportsEachEventByItself)
{
    const ToolWorld world;
    world.server->put("/home/a/old.ics", planned("old", "Old"));
    const auto file = world.folder() + "/many.ics";
    std::ofstream(file) << series.substr(0, series.find("END:VCALENDAR"))
                        << "BEGIN:VEVENT\r\nUID:two\r\n"
                        << start
                        << "SUMMARY:Two\r\nEND:VEVENT\r\nBEGIN:VTODO\r\nUID:task\r\nEND:VTODO\r\n"
                        << "BEGIN:VEVENT\r\nSUMMARY:Nobody\r\nEND:VEVENT\r\nEND:VCALENDAR\r\n";
    const auto first = world.run({"import", "a", file, world.folder() + "/none.ics"});
    EXPECT_EQ(first.status, 5);
    expectParts(
        first.all(), {"imported 2 events", "task: VTODO is no event", "no UID", "none.ics"});
    EXPECT_EQ(world.server->resourceCount(), 3U);
    const auto second = world.run({"import", "a", file});
    expectParts(second.all(), {"imported 0 events", ": two: ", ": daily: "});
    EXPECT_EQ(second.status, 5);
    expectParts(world.run({"export", "a"}).out, {"UID:two", "UID:old", "Course\\, later"});

    // Without the server each is told of as its own, in the order of the file.
    const auto queued = world.run({"--offline", "--json", "import", "b", file});
    EXPECT_EQ(queued.status, 5);
    expectParts(queued.out,
        {"{\"imported\":\"daily\",\"href\":\"/home/b/daily.ics\",\"isWaiting\":true}\n"
         "{\"imported\":\"two\",\"href\":\"/home/b/two.ics\",\"isWaiting\":true}\n"});
    expectParts(queued.err, {"VTODO is no event", "no UID"});
    const auto again = world.run({"--offline", "import", "b", file});
    expectParts(again.all(), {"imported 0 events", "!to be sent", ": two: ", ": daily: "});
}
