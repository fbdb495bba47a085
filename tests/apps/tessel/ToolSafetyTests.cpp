#include "tests/apps/tessel/ToolWorld.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>

using namespace Tessel;
using namespace Tessel::Test;
using Reply = FakeCalendarServer::Reply;

namespace {

/// For a shell.
std::string environmentOf(const ToolWorld& world)
{
    std::string unset;
    std::string set;
    for (const auto& [name, value] : world.environment) {
        if (value.empty()) unset += " -u " + name;
        if (!value.empty()) set += " '" + name + "=" + value + "'";
    }
    return "env" + unset + set + " ";
}

} // namespace

TEST(ToolSafety, HoldsTheAgendaToWhatAPersonReads)
{
    const std::string start = "DTSTART:20270301T100000Z\r\n";
    const auto often = start + "DTEND:20270301T100001Z\r\nRRULE:FREQ=SECONDLY\r\n";
    const std::string summary = "SUMMARY:" + std::string(100'000, 'S') + "\r\n";
    const struct {
        const char* description;
        std::string lines;
        bool isCut;
        std::size_t mostBytes;
    } cases[] {
        {"every second", often + "SUMMARY:Often\r\n", true, 2'000'000},
        {"every second, with a long summary", often + summary, true, 8'000'000},
        {"every day, for centuries",
            "DTSTART:18000101T000000Z\r\nDTEND:20270401T000000Z\r\nRRULE:FREQ=DAILY\r\n", true,
            2'000'000},
        {"ten years, every day", start + "RRULE:FREQ=DAILY\r\nSUMMARY:Stand-up\r\n", false,
            2'000'000},
        {"a long summary", start + summary, false, 200'000},
    };
    for (const auto& [description, lines, isCut, mostBytes] : cases) {
        const ToolWorld world;
        world.server->put("/home/a/x.ics", eventWith("x", lines));
        EXPECT_EQ(world.run({"sync"}).status, 0);
        for (const auto* form : {"--trace", "--json"}) {
            const auto run
                = world.run({form, "agenda", "--from", "2027-03-01", "--to", "2037-02-20"});
            EXPECT_EQ(run.status, isCut ? 5 : 0) << description << form << run.err;
            EXPECT_LT(run.out.size(), mostBytes) << description << form;
            EXPECT_GT(run.out.size(), std::size_t {40}) << description << form;
            EXPECT_EQ(run.all().find("too often") == std::string::npos, !isCut) << description;
        }
    }
}

TEST(ToolSafety, AlignsNothingWithALongCell)
{
    const ToolWorld world;
    const std::string start = "DTSTART:20270301T100000Z\r\n";
    world.server->put(
        "/home/a/x.ics", eventWith("x", start + "SUMMARY:" + std::string(50'000, 'S') + "\r\n"));
    world.server->put("/home/a/y.ics", eventWith("y", start + "SUMMARY:Short\r\n"));
    const auto run = world.run({"events"});
    EXPECT_LT(run.out.size(), std::size_t {1'000}) << run.out.size();
    expectParts(run.out, {"SSS…  /home/a/", "Short  "});
    expectParts(world.run({"--json", "events"}).out, {std::string(50'000, 'S')});
}

TEST(ToolSafety, RepeatsNoCredentialThatAServerRepeats)
{
    const struct {
        const char* variable;
        std::string secret;
        Words forms; ///< as a server may write it
    } cases[] {
        {"TESSEL_PASSWORD", "hunter2pw",
            {"hunter2pw", "aHVudGVyMnB3", "YWxpY2U6aHVudGVyMnB3", "Basic YWxpY2U6aHVudGVyMnB3"}},
        {"TESSEL_PASSWORD", "p&s<w'x\" y",
            {"p&amp;s&lt;w'x\" y", "p&amp;s&lt;w&#39;x&quot; y", "p%26s%3Cw%27x%22%20y",
                "p%26s%3cw%27x%22+y", "p&s<w'x\\\" y"}},
        {"TESSEL_TOKEN", "tokentoken", {"tokentoken", "Bearer tokentoken"}},
        {"TESSEL_PASSWORD", "p\u00e4ssw\u00f6rt<geheim",
            {"p\u00e4ssw\u00f6rt&lt;geheim", "p&#228;ssw&#246;rt&lt;geheim",
                "p&auml;ssw&ouml;rt&lt;geheim", "p\xe4ssw\xf6rt&lt;geheim",
                "p\\x{e4}ssw\\x{f6}rt&lt;geheim", "p\\u00e4ssw\\u00f6rt<geheim",
                "p\u00c3\u00a4ssw\u00c3\u00b6rt<geheim", "p%E4ssw%f6rt%3Cgeheim",
                "%70%C3%A4%73%73%77%C3%B6%72%74%3C%67%65%68%65%69%6D",
                "&#112;&#228;&#115;&#115;&#119;&#246;&#114;&#116;&#60;&#103;&#101;&#104;&#101;"
                "&#105;&#109;",
                "&#x70;&#xe4;&#x73;&#x73;&#x77;&#xf6;&#x72;&#x74;&#x3c;&#x67;&#x65;&#x68;&#x65;"
                "&#x69;&#x6D;",
                "eHDDpHNzd8O2cnQ8Z2VoZWltcQ==", "eHlww6Rzc3fDtnJ0PGdlaGVpbQ==",
                "eHl6cMOkc3N3w7ZydDxnZWhlaW10YWls", "YWxpY2U6cORzc3f2cnQ8Z2VoZWlt",
                "Ym9iOnDkc3N39nJ0PGdlaGVpbQ=="}},
        {"TESSEL_PASSWORD", "\u00fe\u00ff?>~~\U0001f600",
            {"\u00fe\u00ff?>~~\\ud83d\\ude00", "YWw6w77Dvz8-fn7wn5iA",
                "&#xfe;\u00ff?&gt;~~&#128512;"}},
    };
    for (const auto& [variable, secret, forms] : cases) {
        for (const auto& form : forms) {
            ToolWorld world;
            world.environment[variable] = secret;
            world.server->setFault([&](const URLRequest& request, const auto&) {
                return request.method == "PUT"
                    ? std::optional(Reply {.status = 403, .body = "you sent " + form + " to us"})
                    : std::nullopt;
            });
            const Words create {"event", "create", "a", "--summary", "S", "--start", "2027-03-01"};
            auto said = world.run(create).all();
            for (const auto* option : {"--json", "--trace=body", "--offline"}) {
                auto words = create;
                words.insert(words.begin(), option);
                said += world.run(words).all();
            }
            // What waits is refused likewise, and is listed by a process that knows no password.
            said += world.run({"sync"}).all();
            world.environment[variable] = "";
            said += world.run({"pending"}).all() + world.run({"--json", "pending"}).all();
            expectParts(said, {"you sent ", "***", "!" + form, "!" + secret});
            // Nor any end of it; of Base64, padding may stay.
            const auto last = form.find_last_not_of('=') + 1;
            expectParts(said, {"!" + form.substr(last - 6, 6)});
        }
    }
}

TEST(ToolSafety, KeepsNoCredentialInWhatAServerSaysOfOneEvent)
{
    ToolWorld world;
    world.server->put("/home/a/x.ics", eventWith("x", "DTSTART:20270301T100000Z\r\n"));
    world.server->setFault([](const URLRequest& request, const auto&) {
        const bool isFetch = request.body.view().find("multiget") != std::string_view::npos;
        return isFetch ? std::optional(Reply {.status = 207,
                   .body = "<d:multistatus xmlns:d=\"DAV:\"><d:response><d:href>/home/a/x.ics"
                           "</d:href><d:status>HTTP/1.1 403 Forbidden</d:status>"
                           "<d:responsedescription>not for top secret</d:responsedescription>"
                           "</d:response></d:multistatus>"})
                       : std::nullopt;
    });
    auto said = world.run({"sync"}).all();
    // Later processes know no password.
    world.environment["TESSEL_PASSWORD"] = "";
    said += world.run({"events"}).all() + world.run({"--json", "export", "a"}).all();
    EXPECT_EQ(count(said, "not for ***"), 3U) << said;
    EXPECT_FALSE(has(said, "top secret")) << said;
}

TEST(ToolSafety, TakesNoConnectionForAClosedDescriptor)
{
    ToolWorld world;
    world.server->put("/home/a/x.ics", eventWith("x", "DTSTART:20270301T100000Z\r\n"));
    bool hasHeard = false;
    world.server->setFault([&](const URLRequest& request, const auto&) {
        static const Words known {"PROPFIND", "OPTIONS", "REPORT"};
        hasHeard |= std::find(known.begin(), known.end(), request.method) == known.end();
        return std::optional<Reply>();
    });
    const struct {
        const char* words;
        int status;
    } cases[] {
        {"--trace=body calendars <&- >&- 2>&-", 4},
        {"calendars >&-", 4},
        {"--trace=body calendars 2>&- >/dev/null", 0},
        {"--trace=body sync <&- >/dev/null 2>&1", 0},
        {"--help >&-", 4},
        {"--version >&-", 4},
        {"--help >/dev/full", 4},
        {"--version >/dev/full", 4},
    };
    for (const auto& [words, status] : cases) {
        const auto command = environmentOf(world) + TESSEL_TOOL + " " + words;
        // The shell says to standard error what it is told not to.
        const auto ended = std::system(("{ " + command + "; } 2>/dev/null").c_str());
        EXPECT_EQ(WEXITSTATUS(ended), status) << words;
    }
    EXPECT_FALSE(hasHeard);
}

TEST(ToolSafety, WritesEveryFailureInTheFormThatWasAskedFor)
{
    const ToolWorld world;
    for (const auto& command : {Words {}, {"bogus\x1b[2J"}, {"event", "create"},
             {"--timeout", "x", "sync"}, {"calendars", "create", " "},
             {"event", "create", "a", "--summary", "S", "--start", "2027-01-01", "--status",
                 "maybe"}}) {
        const auto text = world.run(command);
        EXPECT_EQ(text.status, 2) << text.err;
        EXPECT_TRUE(text.err.starts_with("tessel: ")) << text.err;
        auto words = command;
        words.insert(words.begin(), "--json");
        const auto json = world.run(words);
        EXPECT_EQ(json.status, 2) << json.err;
        EXPECT_TRUE(json.err.starts_with("{\"error\":\"")) << json.err;
        for (const auto& run : {text, json}) {
            EXPECT_EQ(std::count(run.err.begin(), run.err.end(), '\n'), 1) << run.err;
            EXPECT_EQ(run.err.find('\x1b'), run.err.npos) << run.err;
        }
    }
    EXPECT_EQ(world
                  .run({"event", "create", "a", "--summary", "S", "--start", "2027-01-01",
                      "--status", "Tentative"})
                  .status,
        0);
    expectParts(world.run({"event", "show", "S", "--text"}).out, {"STATUS:TENTATIVE\r\n"});
}

TEST(ToolSafety, DiagnosesNothingThatItWasNotTold)
{
    const ToolWorld world;
    const auto answering = [&](const std::string& path, Reply reply) {
        world.server->setFault([path, reply](const URLRequest& request, const auto&) {
            const bool isIt = request.method == "OPTIONS" && request.url().ends_with(path);
            return isIt ? std::optional(reply) : std::nullopt;
        });
        return world.run({"--timeout", "1", "doctor"});
    };
    const auto silent = answering("/", {});
    EXPECT_EQ(silent.status, 3) << silent.all();
    expectParts(silent.all(), {"OPTIONS http://", "!calendar server"});
    const auto refusing = answering("/", {.status = 405});
    EXPECT_EQ(refusing.status, 0) << refusing.all();
    expectParts(refusing.out, {"does not say what it offers", "!call itself", "!MOVE"});
    HTTPHeaders headers;
    headers.set("Allow", "OPTIONS,MOVE , PROPPATCH");
    const auto calendar = answering("/home/a/", {.status = 200, .headers = headers});
    expectParts(calendar.out, {"ok  MOVE", "ok  PROPPATCH"});
}

TEST(ToolSafety, AdvisesWhatAPersonCanDo)
{
    const ToolWorld world;
    world.server->put("/home/a/bad.ics", eventWith("bad", "DTSTART:20270301\r\nSUMMARY:\x01\r\n"));
    expectParts(
        world.run({"sync"}).all(), {"The event could not be fetched", "!calendar's events"});
    HTTPHeaders headers;
    headers.set("X-Long", std::string(200'000, 'x'));
    world.server->setFault([&](const URLRequest&, const auto&) {
        return std::optional(Reply {.status = 207, .headers = headers});
    });
    expectParts(world.run({"calendars"}).err, {"head is larger", "!network", "!Out of memory"});
}

TEST(ToolSafety, ShowsWhatPeopleRead)
{
    const ToolWorld world;
    world.server->put("/home/a/x.ics",
        eventWith("x",
            "DTSTART:20270301T100000Z\r\nSUMMARY:\xc3\x84rztin\r\nDESCRIPTION:One\\nTwo\r\n"
            "BEGIN:VALARM\r\nACTION:DISPLAY\r\nTRIGGER:-PT1H30M\r\nEND:VALARM\r\n"));
    world.server->put("/home/a/y.ics",
        eventWith("y",
            "DTSTART:20270302T100000Z\r\nSUMMARY:Planning\r\nLOCATION:\r\n"
            "ATTENDEE;SCHEDULE-STATUS=\"2.0,3.7\";PARTSTAT=NEEDS-ACTION:mailto:bob@x.example\r\n"
            "ATTENDEE;SCHEDULE-STATUS=1.2:mailto:carol@x.example\r\n"));
    world.server->put("/home/a/z.ics",
        eventWith("z", "DTSTART:20270302T110000Z\r\nSUMMARY:Lunch\r\nLOCATION:Inn\\n1 Lane\r\n"));
    EXPECT_EQ(world.run({"sync"}).status, 0);
    expectParts(world.run({"agenda", "--from", "2027-03-02"}).out,
        {"  Planning  [", "  Lunch, Inn 1 Lane  ["});
    expectParts(world.run({"event", "show", "y"}).out,
        {"bob@x.example (NEEDS-ACTION, not delivered: 3.7)\n", "carol@x.example\n"});
    EXPECT_EQ(world.run({"calendars", "set", "b", "--name", "Private"}).status, 0);
    expectParts(world.run({"event", "show", "x"}).out,
        {"description: One\n             Two\n", "1 hour 30 minutes before the start\n"});
    expectParts(
        world.run({"events", "PRIVATE", "--search", "\xc3\xa4RZT"}).out, {"no such events"});
    expectParts(world.run({"events", "--search", "\xc3\xa4RZT"}).out, {"\xc3\x84rztin"});
}

TEST(ToolSafety, TellsOfInvitationsByNames)
{
    const ToolWorld world;
    std::string invitedAt = "20270101T000000Z";
    const auto head = std::string("<d:multistatus xmlns:d=\"DAV:\" "
                                  "xmlns:c=\"urn:ietf:params:xml:ns:caldav\" "
                                  "xmlns:cs=\"http://calendarserver.org/ns/\"><d:response>");
    const auto tail = "</d:prop><d:status>HTTP/1.1 200 OK</d:status></d:propstat></d:response>"
                      "</d:multistatus>";
    world.server->setFault([&](const URLRequest& request, const auto&) {
        const auto asks = [&](const char* method, std::string_view path) {
            return request.method == method && request.url().ends_with(path);
        };
        Reply reply {.status = 207};
        if (request.method == "OPTIONS") {
            reply.status = 200;
            reply.headers.set("DAV", "calendar-access, calendarserver-sharing");
        } else if (request.body.view().find("notification-URL") != std::string_view::npos) {
            reply.body = head
                + "<d:href>/</d:href><d:propstat><d:prop><c:calendar-home-set><d:href>/home/</"
                  "d:href>"
                  "</c:calendar-home-set><cs:notification-URL><d:href>/n/</d:href>"
                  "</cs:notification-URL>"
                + tail;
        } else if (asks("PROPFIND", "/n/")) {
            reply.body = head
                + "<d:href>/n/2.xml</d:href><d:propstat><d:prop><d:resourcetype/></"
                  "d:prop><d:status>"
                  "HTTP/1.1 200 OK</d:status></d:propstat></d:response><d:response>"
                  "<d:href>/n/1.xml</d:href><d:propstat><d:prop><d:resourcetype/>"
                + tail;
        } else if (asks("GET", "/n/2.xml")) {
            reply = {.status = 200,
                .body = "<cs:notification xmlns:d=\"DAV:\" "
                        "xmlns:cs=\"http://calendarserver.org/ns/\"><cs:dtstamp>"
                    + invitedAt
                    + "</cs:dtstamp><cs:invite-notification><cs:uid>u</cs:uid><d:href>/a/</d:href>"
                      "<cs:access><cs:read/></cs:access><cs:hosturl><d:href>/home/t/</d:href>"
                      "</cs:hosturl><cs:organizer><d:href>/p/bob/</d:href></cs:organizer>"
                      "<cs:summary>Team</cs:summary></cs:invite-notification></cs:notification>"};
        } else if (asks("POST", "/home/")) {
            reply.status = 200;
        } else if (asks("GET", "/n/1.xml")) {
            reply = {.status = 200,
                .body = "<cs:notification xmlns:d=\"DAV:\" "
                        "xmlns:cs=\"http://calendarserver.org/ns/\"><cs:invite-reply>"
                        "<d:href>/dav/principals/user/bob/</d:href><cs:invite-declined/>"
                        "<cs:hosturl><d:href>/home/a/</d:href></cs:hosturl>"
                        "</cs:invite-reply></cs:notification>"};
        } else {
            return std::optional<Reply>();
        }
        return std::optional(reply);
    });
    EXPECT_EQ(world.run({"sync"}).status, 0);
    expectParts(world.run({"invitations"}).out, {"bob has declined ", "!/dav/"});
    expectParts(world.run({"--json", "invitations"}).out, {"\"answer\":\"declined\""});

    // What was answered is known until somebody invites again.
    expectParts(world.run({"invitations"}).out, {"2  2027-01-01  bob shares Team read-only\n"});
    EXPECT_EQ(world.run({"invitations", "decline", "2"}).status, 0);
    for (int i = 0; i < 2; ++i)
        expectParts(world.run({"invitations"}).out, {"Team read-only (declined)\n"});
    invitedAt = "20270201T000000Z";
    expectParts(world.run({"invitations"}).out, {"Team read-only\n"});
}
