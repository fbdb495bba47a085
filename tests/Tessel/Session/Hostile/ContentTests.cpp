#include "tests/Tessel/Session/World.h"
#include "tests/support/Callback.h"

#include "Tessel/Session/Recurrence/Instances.h"

#include <gtest/gtest.h>

#include <atomic>

using namespace Tessel;
using namespace Tessel::Test;

// What a server may write into answers that are whole.

namespace {

using Reply = FakeCalendarServer::Reply;

std::string listed(const std::string& href, const std::string& tag = "1",
    const std::string& status = "HTTP/1.1 200 OK")
{
    return "<d:response><d:href>" + href + "</d:href><d:propstat><d:prop><d:getetag>\"" + tag
        + "\"</d:getetag></d:prop><d:status>" + status + "</d:status></d:propstat></d:response>";
}

std::string gone(const std::string& href, const std::string& status = "HTTP/1.1 404 Not Found")
{
    return "<d:response><d:href>" + href + "</d:href><d:status>" + status
        + "</d:status></d:response>";
}

std::string event(const std::string& lines)
{
    return "BEGIN:VCALENDAR\nBEGIN:VEVENT\nUID:one\nDTSTART:20240101T000000Z\n" + lines
        + "END:VEVENT\nEND:VCALENDAR\n";
}

std::string brought(const std::string& href, const std::string& text)
{
    return "<d:response><d:href>" + href
        + "</d:href><d:propstat><d:prop><d:getetag>\"9\"</d:getetag><c:calendar-data>" + text
        + "</c:calendar-data></d:prop><d:status>HTTP/1.1 200 OK</d:status></d:propstat>"
          "</d:response>";
}

std::string many(std::size_t count, const std::function<std::string(const std::string&)>& make)
{
    std::string text;
    for (std::size_t i = 0; i < count; ++i)
        text += make(std::to_string(i));
    return text;
}

/// A calendar that is held; the server has changed one of its events and removed another.
struct ContentWorld : World {
    ContentWorld()
    {
        for (const auto* name : {"two", "three"})
            server->put("/home/a/" + std::string(name) + ".ics", eventText(name));
        EXPECT_TRUE(sync());
        server->put("/home/a/one.ics", eventText("one again"));
        server->remove("/home/a/two.ics");
    }

    Result<Changes> sync() const { return wait(session->sync(store)); }

    /// From now on `part` of a request's body has `insert` put before the end of its answer, in
    /// place of all that the answer says where `isAlone`.
    void meddle(const std::string& part, const std::string& insert, bool isAlone)
    {
        server->setFault([=, this](
                             const URLRequest& request, const auto& apply) -> std::optional<Reply> {
            isElsewhere = isElsewhere || !request.url().starts_with(FakeCalendarServer::address);
            if (request.body.view().find(part) == std::string_view::npos) return std::nullopt;
            auto reply = apply();
            const auto start = reply.body.find('>') + 1;
            const auto end = reply.body.find("</d:multistatus>");
            if (end == std::string::npos) return reply;
            const auto from = isAlone ? start : end;
            reply.body.replace(from, end - from, insert);
            return reply;
        });
    }

    std::map<std::string, std::string> held() const
    {
        std::map<std::string, std::string> texts;
        EXPECT_TRUE(store->visit("/home/a/", [&](const Resource& resource) {
            texts.emplace(resource.href, resource.text);
            return true;
        }));
        return texts;
    }

    std::shared_ptr<MemoryStore> store = std::make_shared<MemoryStore>();
    std::atomic<bool> isElsewhere = false;
};

struct Content {
    std::string name;
    const char* part; ///< of the body of the request that is answered with it
    std::string text;
    bool isAlone = false;
};

constexpr auto changes = "sync-collection";
constexpr auto multiget = "calendar-multiget";
constexpr auto homes = "calendar-color";

std::vector<Content> contents()
{
    std::vector<Content> contents {
        {"twice with different tags", changes,
            listed("/home/a/one.ics") + listed("/home/a/one.ics", "2")},
        {"there and gone", changes, listed("/home/a/three.ics") + gone("/home/a/three.ics")},
        {"gone twice", changes, gone("/home/a/two.ics") + gone("/home/a/%74wo.ics")},
        {"5,000 that there are not", changes,
            many(5'000, [](const auto& i) { return listed("/home/a/none" + i + ".ics"); })},
        {"the same 5,000 times", changes,
            many(5'000, [](const auto& i) { return listed("/home/a/one.ics", i); })},
        {"5,000 gone", changes,
            many(5'000, [](const auto& i) { return gone("/home/a/none" + i + ".ics"); })},
        {"statuses that are none", changes,
            gone("/home/a/three.ics", "HTTP/1.1 0") + gone("/home/a/three.ics", "HTTP/1.1 999")
                + gone("/home/a/three.ics", "") + gone("/home/a/three.ics", "404")
                + listed("/home/a/three.ics", "1", "nonsense")},
        {"nothing but a token", changes, "<d:sync-token>x</d:sync-token>", true},
        {"a token of 1 MB", changes,
            "<d:sync-token>" + std::string(1'000'000, 't') + "</d:sync-token>", true},
        {"other resources", multiget, brought("/home/a/other.ics", event({})), true},
        {"resources of elsewhere", multiget,
            brought("https://evil.example/home/a/other.ics", event({})), true},
        {"each twice", multiget,
            brought("/home/a/one.ics", event("SUMMARY:a\n"))
                + brought("/home/a/one.ics", event("SUMMARY:b\n"))},
        {"garbage", multiget, brought("/home/a/one.ics", std::string(100'000, '\n') + "BEGIN:")},
        {"nothing", multiget, brought("/home/a/one.ics", ""), true},
        {"a calendar twice", homes,
            "<d:response><d:href>/home/a</d:href><d:propstat><d:prop><d:resourcetype>"
            "<d:collection/><c:calendar/></d:resourcetype><d:sync-token>x</d:sync-token></d:prop>"
            "<d:status>HTTP/1.1 200 OK</d:status></d:propstat></d:response>"},
        {"a calendar of elsewhere", homes,
            "<d:response><d:href>https://evil.example/home/a/</d:href><d:propstat><d:prop>"
            "<d:resourcetype><d:collection/><c:calendar/></d:resourcetype></d:prop>"
            "<d:status>HTTP/1.1 200 OK</d:status></d:propstat></d:response>"},
    };
    for (const std::string href :
        {"https://evil.example/home/a/x.ics", "//evil.example/x.ics", "@evil.example/x.ics",
            "https://server.example@evil.example/x.ics", "http://server.example/home/a/x.ics", "..",
            "../../../etc/passwd", "/home/a/../b/x.ics", "/home/a/%2e%2e/", "", " ", "?", "#", "%",
            "%zz", "\\\\evil.example\\x", "mailto:x@evil.example", "javascript:alert(1)", "&#9;/x",
            "/home/a/one.ics?x", "/home/a/one.ics#x", "/home/a", "/home/a//", "*", "\xC3\xBC"}) {
        contents.push_back({"href " + href, changes, listed(href)});
        contents.push_back({"gone href " + href, changes, gone(href)});
    }
    contents.push_back({"href of 100 KB", changes, listed(std::string(100'000, '/'))});
    for (const std::string rule :
        {"FREQ=SECONDLY;COUNT=1000000000", "FREQ=SECONDLY", "FREQ=YEARLY;INTERVAL=2147483647",
            "FREQ=DAILY;COUNT=99999999999999999999", "FREQ=MONTHLY;BYMONTHDAY=31;BYMONTH=2",
            "FREQ=YEARLY;UNTIL=99991231T235959Z", "FREQ=NONSENSE", "FREQ=DAILY;INTERVAL=0"}) {
        contents.push_back(
            {rule, multiget, brought("/home/a/one.ics", event("RRULE:" + rule + "\n")), true});
    }
    return contents;
}

} // namespace

TEST(HostileContent, IsSurvivedAndGoneWithTheNextComparison)
{
    using namespace std::chrono_literals;
    for (const auto& [name, part, text, isAlone] : contents()) {
        ContentWorld world;
        world.meddle(part, text, isAlone);
        const auto began = std::chrono::steady_clock::now();
        const auto synced = world.sync();
        if (synced) {
            for (const auto& calendar : synced.value().calendars) {
                std::set<std::string> told;
                for (const auto* hrefs : {&calendar.added, &calendar.edited, &calendar.deleted}) {
                    for (const auto& href : *hrefs)
                        EXPECT_TRUE(told.insert(href).second) << name << " tells twice of " << href;
                }
                for (const auto& failed : calendar.failed)
                    EXPECT_TRUE(told.insert(failed.href).second) << name << ": " << failed.href;
            }
        }
        // What is held can be read, whatever it is.
        for (const auto& [href, held] : world.held()) {
            instances(held, 1'704'000'000'000, 1'705'000'000'000, TimeZone::UTC());
            if (const auto read = EventText::read(held)) read.value().apply({.summary = "New"});
        }
        EXPECT_TRUE(world.sync() || part == std::string(homes)) << name;
        EXPECT_LT(std::chrono::steady_clock::now() - began, 20s) << name;
        EXPECT_FALSE(world.isElsewhere) << name << " leads elsewhere";

        world.server->setFault({});
        world.server->expireTokens();
        const auto last = world.sync();
        ASSERT_TRUE(last && last.value().isComplete()) << name;
        const std::map<std::string, std::string> there {
            {"/home/a/one.ics", eventText("one again")}, {"/home/a/three.ics", eventText("three")}};
        EXPECT_EQ(world.held(), there) << name;
        EXPECT_EQ(world.store->calendars().value().size(), 2u) << name;
    }
}

/// A page that promises another one, for ever.
TEST(HostileContent, PagesWithoutEndEnd)
{
    ContentWorld world;
    std::atomic<int> page = 0;
    world.server->setFault([&](const URLRequest& request, const auto&) -> std::optional<Reply> {
        if (request.body.view().find(changes) == std::string_view::npos) return std::nullopt;
        return Reply {.status = 207,
            .body = "<d:multistatus xmlns:d=\"DAV:\">"
                + gone("/home/a/", "HTTP/1.1 507 Insufficient Storage") + "<d:sync-token>"
                + std::to_string(++page) + "</d:sync-token></d:multistatus>"};
    });
    const auto synced = world.sync();
    ASSERT_TRUE(synced && synced.value().isComplete());
    EXPECT_EQ(
        synced.value().calendars.front().deleted, std::vector<std::string> {"/home/a/two.ics"});
    EXPECT_EQ(world.held().size(), 2u);
}
