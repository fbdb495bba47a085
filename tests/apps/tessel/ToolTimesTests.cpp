#include "tests/apps/tessel/ToolWorld.h"

#include <gtest/gtest.h>

// All on a clock of Berlin: five or six hours ahead of New York.

using namespace Tessel;
using namespace Tessel::Test;

namespace {

constexpr const char* weekly = "DTSTART;TZID=America/New_York:20270301T230000\r\nDURATION:PT1H\r\n"
                               "RRULE:FREQ=WEEKLY;COUNT=5\r\nSUMMARY:Call\r\n";
constexpr const char* daily = "DTSTART;TZID=America/New_York:20270225T230000\r\nDURATION:PT1H\r\n"
                              "RRULE:FREQ=DAILY;COUNT=9\r\nSUMMARY:Call\r\n";
constexpr const char* floating
    = "DTSTART:20270326T010000\r\nDTEND:20270326T020000\r\nSUMMARY:Call\r\n";
constexpr const char* nights = "DTSTART;TZID=Europe/Berlin:20270326T013000\r\n"
                               "DTEND;TZID=Europe/Berlin:20270326T023000\r\n"
                               "RRULE:FREQ=DAILY;COUNT=5\r\nSUMMARY:Call\r\n";
/// The second day is moved to the third, to the hour of that; the fourth to the next month.
const std::string moved = nights + std::string("END:VEVENT\r\n")
    + "BEGIN:VEVENT\r\nUID:x\r\nDTSTAMP:20240101T000000Z\r\n"
      "RECURRENCE-ID;TZID=Europe/Berlin:20270327T013000\r\n"
      "DTSTART;TZID=Europe/Berlin:20270328T013000\r\nSUMMARY:Moved\r\nEND:VEVENT\r\n"
      "BEGIN:VEVENT\r\nUID:x\r\nDTSTAMP:20240101T000000Z\r\n"
      "RECURRENCE-ID;TZID=Europe/Berlin:20270329T013000\r\n"
      "DTSTART;TZID=Europe/Berlin:20270429T110000\r\n"
      "DTEND;TZID=Europe/Berlin:20270429T120000\r\nSUMMARY:Far\r\n";

} // namespace

TEST(ToolTimes, AreThoseOfTheZoneThatTheSystemIsIn)
{
    ToolWorld world;
    EXPECT_EQ(world.run({"sync"}).status, 0);
    const struct {
        const char* zone;
        std::string start; ///< of an event at 20:00; none where the zone is refused
    } cases[] {
        {":America/New_York", "20270702T200000"},
        {"/usr/share/zoneinfo/America/New_York", "20270702T200000"},
        {":/usr/share/zoneinfo/America/New_York", "20270702T200000"},
        {"UTC0", "20270702T200000"},
        {"CET-1CEST,M3.5.0,M10.5.0/3", ""},
        {"<+07>-7", ""},
    };
    for (const auto& [zone, start] : cases) {
        world.environment["TZ"] = zone;
        const auto run = world.run({"--offline", "event", "create", "a", "--summary", zone,
            "--start", "2027-07-02T20:00"});
        EXPECT_EQ(run.status, start.empty() ? 2 : 0) << zone << run.all();
        if (start.empty()) {
            EXPECT_TRUE(has(run.err, zone)) << run.err;
            continue;
        }
        const auto text = world.run({"--offline", "event", "show", zone, "--text"}).out;
        const bool isInNewYork = has(zone, "New_York");
        EXPECT_TRUE(has(text, isInNewYork ? "TZID=America/New_York:" + start : start)) << text;
    }
}

TEST(ToolTimes, MeansTheDayThatTheAgendaShows)
{
    const struct {
        std::string event;
        const char* instance;
        int status;
        Words holds; ///< of what is said, and of the text as it is then
    } cases[] {
        {weekly, "2027-03-02", 0, {"EXDATE;TZID=America/New_York:20270301T230000"}},
        {weekly, "2027-03-08", 0, {"EXDATE;TZID=America/New_York:20270308T230000"}},
        {weekly, "2027-03-02T05:00", 0, {"EXDATE;TZID=America/New_York:20270301T230000"}},
        {weekly, "2027-03-01T23:00", 0, {"EXDATE;TZID=America/New_York:20270301T230000"}},
        {weekly, "2027-03-03", 1, {"no instance on 2027-03-03", "!EXDATE"}},
        // The agenda's 2 March is New York's first, New York's second is the agenda's third.
        {daily, "2027-03-02", 2,
            {"2027-03-02T04:00:00Z (for 2027-03-02 05:00)",
                "2027-03-03T04:00:00Z (for 2027-03-03 05:00)", "!EXDATE"}},
        {daily, "2027-03-02T04:00Z", 0, {"EXDATE;TZID=America/New_York:20270301T230000"}},
        {daily, "2027-03-02T23:00Z", 1, {"no instance", "!EXDATE"}},
        {moved, "2027-03-27", 0, {"EXDATE;TZID=Europe/Berlin:20270327T013000", "!Moved"}},
        {moved, "2027-03-29", 0, {"EXDATE;TZID=Europe/Berlin:20270329T013000", "!Far"}},
        {moved, "2027-04-29", 0, {"EXDATE;TZID=Europe/Berlin:20270329T013000", "!Far"}},
        {moved, "2027-03-28T01:30", 2,
            {"2027-03-27T00:30:00Z (for 2027-03-28 01:30)",
                "2027-03-28T00:30:00Z (for 2027-03-28 01:30)", "!EXDATE"}},
        {moved, "2027-03-28T00:30Z", 0, {"EXDATE;TZID=Europe/Berlin:20270328T013000", "Moved"}},
    };
    for (const auto& [event, instance, status, holds] : cases) {
        const ToolWorld world;
        world.server->put("/home/a/x.ics", eventWith("x", event));
        const auto run = world.run({"event", "delete", "Call", "--instance", instance});
        EXPECT_EQ(run.status, status) << instance << run.all();
        expectParts(run.err + *world.server->text("/home/a/x.ics"), holds);
    }
}

TEST(ToolTimes, WritesTimesOnTheClockOfTheEvent)
{
    const Words create {"event", "create", "a", "--summary", "Call"};
    const Words edit {"event", "edit", "Call"};
    const struct {
        std::string event; ///< empty for a new one
        Words options;
        Words holds;
    } cases[] {
        // The last day is one of the series' own: 19:00 there is 23:00Z, in Berlin the next day.
        {"",
            {"--start", "2027-03-06T19:00", "--zone", "America/New_York", "--repeat", "weekly",
                "--until", "2027-04-03"},
            {"RRULE:FREQ=WEEKLY;UNTIL=20270404T035959Z"}},
        {weekly, {"--repeat", "daily", "--until", "2027-04-03"}, {"UNTIL=20270404T035959Z"}},
        {weekly, {"--repeat", "daily", "--until", "2027-04-03T05:00"}, {"UNTIL=20270403T030000Z"}},
        {floating, {"--repeat", "daily", "--until", "2027-04-03"}, {"UNTIL=20270403T235959\r"}},
        {floating, {"--start", "2027-03-27T09:00Z"}, {"DTSTART:20270327T100000\r"}},
        {"", {"--start", "2027-03-01", "--repeat", "daily", "--until", "2027-03-09T12:00"},
            {"UNTIL=20270309\r"}},
        // An hour is left out on 28 March, and is there twice on 31 October.
        {"", {"--start", "2027-03-28T01:30", "--duration", "90m"},
            {"DTEND;TZID=Europe/Berlin:20270328T040000"}},
        {"", {"--start", "2027-03-27T01:30", "--duration", "1d90m"},
            {"DTEND;TZID=Europe/Berlin:20270328T040000"}},
        {"", {"--start", "2027-10-31T01:30", "--duration", "90m"}, {"DTEND:20271031T010000Z"}},
        {floating, {"--duration", "90m"}, {"DTEND:20270326T023000"}},
        {"", {"--start", "2027-03-28", "--duration", "2d"}, {"DTEND;VALUE=DATE:20270330"}},
        // The instance's own start counts, not that of the first day.
        {nights, {"--instance", "2027-03-28", "--duration", "2h"},
            {"DTSTART;TZID=Europe/Berlin:20270328T013000",
                "DTEND;TZID=Europe/Berlin:20270328T043000"}},
        {moved, {"--instance", "2027-04-29", "--duration", "2h"},
            {"DTSTART;TZID=Europe/Berlin:20270429T110000",
                "DTEND;TZID=Europe/Berlin:20270429T130000"}},
    };
    for (const auto& [event, options, holds] : cases) {
        const ToolWorld world;
        if (!event.empty()) world.server->put("/home/a/x.ics", eventWith("x", event));
        auto words = event.empty() ? create : edit;
        words.insert(words.end(), options.begin(), options.end());
        const auto run = world.run(words);
        EXPECT_EQ(run.status, 0) << testing::PrintToString(words) << run.all();
        expectParts(
            world.run({"event", "show", event.empty() ? "Call" : "x", "--text"}).out, holds);
    }
}

TEST(ToolTimes, ShowsTheInstanceThatIsMeant)
{
    const ToolWorld world;
    world.server->put("/home/a/x.ics", eventWith("x", moved));
    const struct {
        const char* instance;
        Words shows;
        Words tells; ///< with --json
    } cases[] {
        {"2027-03-30", {"start:       2027-03-30 01:30\nend:         2027-03-30 02:30"},
            {"\"start\":\"2027-03-30T01:30:00+02:00\",\"end\":\"2027-03-30T02:30:00+02:00\"",
                "\"instance\":\"2027-03-30T01:30:00\",\"isChanged\":false"}},
        {"2027-03-29",
            {"summary:     Far\n", "instance of: 2027-03-29 01:30\nstart:       2027-04-29 11:00"},
            {"\"start\":\"2027-04-29T11:00:00+02:00\"", "\"summary\":\"Far\"",
                "\"instance\":\"2027-03-29T01:30:00\",\"isChanged\":true"}},
    };
    for (const auto& [instance, shows, tells] : cases) {
        expectParts(world.run({"event", "show", "x", "--instance", instance}).out, shows);
        expectParts(world.run({"--json", "event", "show", "x", "--instance", instance}).out, tells);
    }
}

TEST(ToolTimes, EndsWhatLastsAllDayOnItsLastDay)
{
    const ToolWorld world;
    const Words create {"event", "create", "a", "--summary", "Trip", "--start", "2027-02-01"};
    const auto with = [](Words words, const Words& more) {
        words.insert(words.end(), more.begin(), more.end());
        return words;
    };
    EXPECT_EQ(world.run(with(create, {"--end", "2027-02-03", "--repeat", "weekly"})).status, 0);
    for (const auto& instance : {Words {}, {"--instance", "2027-02-01"}}) {
        const auto show = with({"event", "show", "Trip"}, instance);
        expectParts(world.run(show).out, {"start:       2027-02-01\nend:         2027-02-03\n"});
        expectParts(world.run(with({"--json"}, show)).out, {"\"end\":\"2027-02-04\""});
    }
    for (const auto* list : {"events", "agenda"})
        expectParts(world.run({"--json", list, "--from", "2027-02-01", "--to", "2027-02-02"}).out,
            {"\"start\":\"2027-02-01\",\"end\":\"2027-02-04\""});
    EXPECT_EQ(world.run({"--offline", "event", "edit", "Trip", "--end", "2027-02-05"}).status, 0);
    expectParts(world.run({"pending"}).out, {"end: 2027-02-05"});

    for (const auto& command : {create, {"event", "edit", "Trip"}}) {
        for (const auto* length : {"90m", "1d12h", "0m"}) {
            const auto run = world.run(with(command, {"--duration", length}));
            EXPECT_EQ(run.status, 2) << run.all();
            expectParts(run.err, {"whole days"});
        }
    }
    const Words timed {"event", "edit", "Trip", "--start", "2027-02-01T10:00", "--duration", "90m"};
    EXPECT_EQ(world.run(with({"--offline"}, timed)).status, 0);
}

TEST(ToolTimes, TellsTimesOfEveryAge)
{
    const ToolWorld world;
    world.server->put("/home/a/x.ics",
        eventWith("x", "DTSTART:19650301T090000Z\r\nDTEND:19650301T093015Z\r\nSUMMARY:Old\r\n"));
    expectParts(world.run({"--json", "events"}).out,
        {"\"start\":\"1965-03-01T09:00:00Z\",\"end\":\"1965-03-01T09:30:15Z\""});
    const Words range {"agenda", "--from", "1965-03-01", "--to", "1965-03-01"};
    expectParts(world.run(range).out, {"Monday, 1 March 1965\n  10:00–10:30  Old"});
    auto told = range;
    told.insert(told.begin(), "--json");
    expectParts(world.run(told).out,
        {"\"start\":\"1965-03-01T10:00:00+01:00\",\"end\":\"1965-03-01T10:30:15+01:00\""});
}

TEST(Tool, TakesNoEventForAnotherWhoseNameItHas)
{
    const std::string wedding = "DTSTART:20270301T100000Z\r\nSUMMARY:Wedding\r\n";
    const std::string lunch = "DTSTART:20270301T110000Z\r\nSUMMARY:Lunch\r\n";
    const struct {
        const char* uid; ///< of the wedding
        Words command;
        int status;
        Words says;
    } cases[] {
        {"Lunch-1", {"event", "delete", "Lunch"}, 0, {"deleted Lunch"}},
        {"Lunch-1", {"event", "move", "Lunch", "b"}, 0, {"moved Lunch"}},
        {"Lunch-1", {"event", "show", "Lunch"}, 2,
            {"/home/a/w.ics (Wedding)", "/home/a/l.ics (Lunch)"}},
        {"Lunch-1", {"event", "edit", "Lunch", "--location", "x"}, 2, {"/home/a/w.ics (Wedding)"}},
        {"Lunch", {"event", "delete", "Lunch"}, 2,
            {"/home/a/w.ics (Wedding)", "/home/a/l.ics (Lunch)"}},
        {"Lunch", {"event", "delete", "/home/a/l.ics"}, 0, {"deleted Lunch"}},
        {"other-uid", {"event", "show", "othe"}, 0, {"summary:     Wedding"}},
        {"other-uid", {"event", "delete", "othe"}, 1, {"no event othe"}},
        {"own", {"event", "show", "own"}, 0, {"summary:     Wedding"}},
        {"own-uid", {"event", "show", "own-uid"}, 0, {"summary:     Wedding"}},
        {"Other-uid", {"event", "delete", "lunch"}, 0, {"deleted Lunch"}},
        {"Other-uid", {"event", "show", "othe"}, 0, {"summary:     Wedding"}},
        {"LUNCH", {"event", "delete", "Lunch"}, 0, {"deleted Lunch"}},
        {"LUNCH", {"event", "delete", "lunch"}, 2, {"/home/a/w.ics (Wedding)", "l.ics (Lunch)"}},
        {"lunch-1", {"event", "show", "lunch"}, 2, {"/home/a/w.ics (Wedding)", "l.ics (Lunch)"}},
    };
    for (const auto& [uid, command, status, says] : cases) {
        const ToolWorld world;
        world.server->put("/home/a/w.ics", eventWith(uid, wedding));
        world.server->put("/home/a/l.ics", eventWith("own-uid-2", lunch));
        const auto run = world.run(command);
        EXPECT_EQ(run.status, status) << testing::PrintToString(command) << run.all();
        expectParts(run.all(), says);
        const auto left = command[1] == "delete" && status == 0 ? 1U : 2U;
        EXPECT_EQ(world.server->resourceCount(), left);
        EXPECT_EQ(world.server->text("/home/a/w.ics"), eventWith(uid, wedding));
    }
}

TEST(Tool, LinesUpWideCharacters)
{
    const ToolWorld world;
    int number = 0;
    for (const std::string summary : {"会議", "🎉", "e\u0301t\u00e9"}) {
        const auto uid = "uid-" + std::to_string(++number);
        world.server->put("/home/a/" + uid + ".ics",
            eventWith(uid, "DTSTART;VALUE=DATE:20270301\r\nSUMMARY:" + summary + "\r\n"));
    }
    expectParts(world.run({"events"}).out,
        {"  SUMMARY  CALENDAR  UID", "  会議     /home/a/  uid", "  🎉       /home/a/  uid",
            "  e\u0301t\u00e9      /home/a/  uid"});
}

TEST(Tool, FindsMovingInNoOtherMethod)
{
    for (const auto& [methods, isThere] :
        {std::pair("OPTIONS, REMOVE,PROPPATCH", false), {"OPTIONS,MOVE , PROPPATCH", true}}) {
        const ToolWorld world;
        world.server->setFault([allowed = methods](const URLRequest& request, const auto&) {
            auto reply = std::optional<FakeCalendarServer::Reply>();
            if (request.method == "OPTIONS") {
                reply = {.status = 200};
                reply->headers.set("Allow", allowed);
            }
            return reply;
        });
        expectParts(world.run({"--json", "doctor"}).out,
            {std::string("\"MOVE\",\"isThere\":") + (isThere ? "true" : "false"),
                "\"PROPPATCH\",\"isThere\":true"});
    }
}
