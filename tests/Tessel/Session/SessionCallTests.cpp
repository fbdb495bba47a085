#include "Tessel/CaldavLibrary/PasswordAuth.h"
#include "Tessel/Platform/Foundation/Operations/OperationQueue.h"
#include "Tessel/Platform/Transport/MCurlNetworkManager.h"
#include "Tessel/Platform/Transport/MNetworkError.h"
#include "Tessel/Session/Exchange/Timer.h"
#include "Tessel/Session/Opening/ServiceLookup.h"
#include "tests/Tessel/Session/World.h"
#include "tests/support/Callback.h"
#include "tests/support/LogRecorder.h"
#include "tests/support/ScriptedServer.h"

#include <gtest/gtest.h>

#include <cstring>
#include <future>
#include <regex>
#include <set>

using namespace Tessel;
using namespace Tessel::Test;
using namespace std::chrono_literals;

namespace {

using Reply = FakeCalendarServer::Reply;

template <class T> std::string told(const Result<T>& result)
{
    return result ? "done" : std::string(nameOf(result.failure().kind)) + ": " + result.reason();
}

/// Ends every request as libcurl does that meets plain HTTP where it says TLS.
struct TransportWithoutTLS final : MNetworkManager {
    int send(MTask task) override
    {
        task.completionHandler({}, nullptr, std::nullopt,
            makeNetworkError(
                MNetworkErrorCode::untrusted, "error:0A00010B:SSL routines::wrong version number"),
            1);
        return 1;
    }
};

/// Keeps every request and answers none.
struct SilentTransport final : MNetworkManager {
    std::mutex mutex;
    std::vector<MTask> tasks;

    int send(MTask task) override
    {
        const std::lock_guard lock(mutex);
        tasks.push_back(std::move(task));
        return 1;
    }
};

} // namespace

TEST(SessionCall, EndsOnceAtItsLimitByCancellingAndWithItsSession)
{
    World world({.limit = 200ms});
    const UseTransport use(std::make_shared<SilentTransport>());
    const auto late = wait(world.session->fetch("/home/a/one.ics"));
    ASSERT_FALSE(late);
    EXPECT_EQ(late.failure().kind, FailureKind::timedOut);
    EXPECT_NE(late.reason().find("GET https://server.example/home/a/one.ics"), std::string::npos);

    const Callback<Result<Resource>> told;
    const auto call = world.session->fetch("/home/a/one.ics", told);
    call.cancel();
    call.cancel();
    EXPECT_EQ(wait(call).failure().kind, FailureKind::cancelled);
    ASSERT_TRUE(told.wait());

    const auto last = world.session->fetch("/home/a/one.ics", told);
    world.session = nullptr;
    EXPECT_EQ(wait(last).failure().kind, FailureKind::cancelled);
    ASSERT_TRUE(told.wait(2));
    std::this_thread::sleep_for(250ms);
    EXPECT_EQ(told.count(), 2u);
}

/// The server has made the event, and is looked at for its tag.
TEST(SessionCall, IsUncertainWhereItIsCancelledAfterItWasDone)
{
    const World world;
    struct Gates {
        std::promise<void> looks;
        std::promise<void> goesOn;
    };
    // Shared: a request of a call that is cancelled goes on by itself.
    const auto gates = std::make_shared<Gates>();
    world.server->setFault(
        [gates](const URLRequest& request, const auto& apply) -> std::optional<Reply> {
            if (request.method == "PUT") return Reply {.status = apply().status};
            gates->looks.set_value();
            gates->goesOn.get_future().wait();
            return std::nullopt;
        });
    const auto call = world.session->create("/home/a/", EventText::read(eventText("two")).value());
    gates->looks.get_future().wait();
    call.cancel();
    gates->goesOn.set_value();
    const auto outcome = wait(call);
    EXPECT_EQ(outcome.failure().kind, FailureKind::cancelled);
    EXPECT_TRUE(outcome.failure().isUncertain);
    EXPECT_TRUE(world.server->text("/home/a/two.ics"));
}

TEST(SessionCall, LogsEachExchangeUnderItsNumberAndWithoutThePassword)
{
    const World world;
    const LogRecorder log;
    EXPECT_TRUE(wait(world.session->fetch("/home/a/one.ics")));
    EXPECT_FALSE(wait(world.session->fetch("/home/a/none.ics")));

    std::vector<std::string> numbers;
    for (const auto& line : log.lines()) {
        EXPECT_EQ(line.find("secret"), line.npos) << line;
        std::smatch found;
        const std::regex begins("exchange ([0-9]+): GET https://server.example/home/a/.*");
        const std::regex ends("exchange ([0-9]+): (200|404), [0-9]+ bytes, [0-9]+ ms");
        if (std::regex_match(line, found, begins) || std::regex_match(line, found, ends))
            numbers.push_back(found[1]);
    }
    ASSERT_EQ(numbers.size(), 4u);
    EXPECT_EQ(numbers[0], numbers[1]);
    EXPECT_EQ(numbers[2], numbers[3]);
    EXPECT_NE(numbers[0], numbers[2]);
}

/// Each of these threads is one that the call which is waited for may need.
TEST(SessionCall, RefusesToBeWaitedForOnEveryThreadOfTheLibrary)
{
    const World world;
    const World inPlace({.executor = [](auto work) { work(); }});
    const UseTransport use(std::make_shared<SilentTransport>());
    MCurlNetworkManager transport;
    OperationQueue queue;
    using Work = std::function<void()>;
    const std::pair<const char*, std::function<void(Work)>> threads[] {
        {"continuation",
            [&](Work work) { world.session->calendars([work](const auto&) { work(); }).cancel(); }},
        {"continuation in place",
            [&](Work work) {
                const auto call = inPlace.session->calendars([work](const auto&) { work(); });
                queue.addOperation([call] { call.cancel(); });
            }},
        {"worker", [&](Work work) { queue.addOperation(work); }},
        {"transport",
            [&](Work work) {
                transport.send({.request = URLRequest("http://127.0.0.1:1/"),
                    .completionHandler = [work](auto...) { work(); }});
            }},
        {"timer", [&](Work work) { Timer::shared().after(0ms, work); }},
        {"lookup",
            [&](Work work) { ServiceLookup::shared().find("", false, [work](auto) { work(); }); }},
    };
    for (const auto& [name, runOn] : threads) {
        const Callback<std::optional<FailureKind>> ended;
        const auto call = world.session->fetch("/home/a/one.ics");
        runOn([call, ended] {
            const auto waited = wait(call);
            ended(waited ? std::nullopt : std::optional(waited.failure().kind));
        });
        EXPECT_TRUE(ended.wait()) << name;
        EXPECT_EQ(std::get<0>(ended.arguments()), FailureKind::notSent) << name;
        EXPECT_FALSE(call.isDone()) << name;
    }
}

TEST(SessionCall, AsksOnceForAFreshCredential)
{
    std::atomic<int> asked = 0;
    World world({.freshCredential = [&](const auto& done) {
        ++asked;
        done(true);
        done(true);
    }});
    std::atomic<int> refused = 0;
    world.server->setFault([&](const URLRequest&, const auto&) -> std::optional<Reply> {
        if (++refused > 1) return std::nullopt;
        return Reply {.status = 401};
    });
    EXPECT_TRUE(wait(world.session->fetch("/home/a/one.ics")));
    EXPECT_EQ(asked, 1);

    world.server->setFault(
        [&](const URLRequest&, const auto&) { return std::optional(Reply {.status = 401}); });
    const auto still = wait(world.session->fetch("/home/a/one.ics"));
    EXPECT_EQ(still.failure().kind, FailureKind::unauthorized);
    EXPECT_EQ(asked, 2);
}

TEST(SessionCall, SendsNothingToOtherHostsAndNoPasswordWithoutTLS)
{
    World world;
    for (const auto* place : {"https://evil.example/home/a/one.ics", "http://server.example/x",
             "https://server.example:444/x", "https://server.example@evil/x", "@evil.example/x",
             "http:///x", ""}) {
        const auto asked = world.server->asked("GET");
        const auto result = wait(world.session->fetch(place));
        ASSERT_FALSE(result) << place;
        EXPECT_TRUE(result.failure().kind == FailureKind::notSent
            || result.failure().kind == FailureKind::malformed)
            << place;
        EXPECT_EQ(world.server->asked("GET"), asked) << place;
    }
    const auto plain
        = wait(Session::open({.server = "http://server.example", .user = "a"}, Password {"b"}));
    EXPECT_EQ(plain.failure().kind, FailureKind::notSent);
}

TEST(SessionCall, RefusesWhatCannotBeMeantBeforeAnythingIsSent)
{
    const World world;
    auto& session = *world.session;
    const auto held = world.fetch();
    world.server->setFault([](const URLRequest& request, const auto&) -> std::optional<Reply> {
        ADD_FAILURE() << request.method << " " << request.url() << " was sent";
        return Reply {.status = 500};
    });
    const auto isRefused = [](const auto& call, const std::string& as, const std::string& what) {
        const auto said = told(wait(call));
        EXPECT_TRUE(said.starts_with(as)) << what << ": " << said;
    };
    for (const auto* place : {"", "/", "/home/a/", "/home/a/?x", "/home/a/..", "/home/a/.",
             "https://server.example", "https://server.example/home/a/"}) {
        isRefused(session.fetch(place), "malformed", place);
        for (const auto* tag : {"", "\"1\""}) {
            const Resource collection {place, tag, held.text};
            isRefused(session.change(collection, {.summary = "New"}), "malformed", place);
            isRefused(session.remove(collection), "malformed", place);
            isRefused(session.move(collection, "/home/b/"), "malformed", place);
        }
    }
    const auto event = EventText::read(eventText("two")).value();
    isRefused(session.create("", event), "malformed", "create");
    isRefused(session.move(held, ""), "malformed", "move");
    for (const auto& [from, to] : std::initializer_list<std::pair<const char*, const char*>> {
             {"UID:two\r\n", ""}, {"DTSTART", "X-START"}, {"Plan", "Pl\xE4n"}}) {
        auto text = eventText("two");
        text.replace(text.find(from), std::strlen(from), to);
        isRefused(session.create("/home/a/", EventText::read(text).value()), "malformed", from);
    }
    EXPECT_EQ(wait(session.move(held, "/home/%61")).value(), held) << "it is there";
    std::string destination;
    world.server->setFault([&](const URLRequest& request, const auto& apply) {
        if (const auto to = request.headers.value("Destination")) destination = *to;
        return std::optional(apply());
    });
    EXPECT_TRUE(wait(session.move(held, "/home/my \u00E9")));
    EXPECT_EQ(destination, "https://server.example/home/my%20%C3%A9/one.ics");

    isRefused(session.sync(nullptr), "storage", "sync");
    isRefused(session.syncCalendar(nullptr, "/home/a/"), "storage", "syncCalendar");
    isRefused(session.sendOutbox(nullptr), "storage", "sendOutbox");

    for (const CalendarProperties& properties : std::initializer_list<CalendarProperties> {
             {.color = "red"}, {.color = "#12345"}, {.color = "#12345G"}, {.order = "first"},
             {.order = ""}, {.timeZone = "Europe/Nowhere"}, {.timeZone = ""}}) {
        isRefused(session.createCalendar(properties), "malformed", "createCalendar");
        isRefused(session.changeCalendar("/home/a/", properties), "malformed", "changeCalendar");
    }
    const CalendarProperties tasks {.components = std::vector<std::string> {"VTODO"}};
    isRefused(session.changeCalendar("/home/a/", tasks), "malformed", "components");
}

TEST(SessionCall, NamesNewEventsSoThatNoneLeavesItsCalendar)
{
    const World world;
    std::set<std::string> names;
    for (const auto& uid : {std::string("a@example.com"), std::string("../b/evil"),
             std::string("..\\\\b"), std::string(".hidden"), std::string("%2e%2e%2fb"),
             std::string("x?y#z"), std::string(10'000, 'u'), std::string(10'001, 'u')}) {
        const auto event = EventText::read(eventText(uid)).value();
        const auto made = wait(world.session->create("/home/a/", event));
        ASSERT_TRUE(made) << uid;
        const auto name = made.value().href.substr(std::strlen("/home/a/"));
        EXPECT_TRUE(made.value().href.starts_with("/home/a/"));
        EXPECT_EQ(name.find_first_of("/\\"), name.npos) << name;
        for (const auto* const path : {"%2F", "%5C", "%25", "%2E"})
            EXPECT_EQ(name.find(path), name.npos) << name;
        EXPECT_NE(name.front(), '.');
        EXPECT_LE(name.size(), 500U);
        names.insert(name);
        const auto again = wait(world.session->create("/home/a/", event));
        EXPECT_EQ(told(again).substr(0, 7), "changed") << "the same event has the same name";
    }
    EXPECT_EQ(names.size(), 8U);
    EXPECT_TRUE(names.contains("a%40example.com.ics"));
}

TEST(SessionCall, FetchesEachNotificationOnceAndNotAnyNumberOfThem)
{
    std::size_t listed = 0;
    const World world;
    world.server->setFault([&](const URLRequest& request,
                               const auto& apply) -> std::optional<Reply> {
        if (request.url().ends_with("/n/")) {
            std::string members;
            for (std::size_t i = 0; i < listed; ++i)
                members += "<response><href>/n/" + std::to_string(i / 2)
                    + "</href><propstat><prop><resourcetype/></prop>"
                      "<status>HTTP/1.1 200 OK</status></propstat></response>";
            return Reply {207, "<multistatus xmlns=\"DAV:\">" + members + "</multistatus>"};
        }
        if (request.method == "GET") return Reply {.status = 200};
        auto reply = apply();
        if (request.method == "OPTIONS")
            reply.headers.set("DAV", "1, calendar-access, calendarserver-sharing");
        if (const auto end = reply.body.find("</d:prop>"); end != reply.body.npos)
            reply.body.insert(end,
                "<x:notification-URL xmlns:x=\"http://calendarserver.org/ns/\"><d:href>/n/</d:href>"
                "</x:notification-URL>");
        return reply;
    });
    const auto session = World::open("alice");
    listed = 10;
    EXPECT_EQ(wait(session->invitations()).value().size(), 5U);
    listed = 6000;
    const auto invitations = wait(session->invitations()).value();
    ASSERT_EQ(invitations.size(), 1001U);
    EXPECT_EQ(std::count_if(invitations.begin(), invitations.end(),
                  [](const auto& each) { return each.failure.has_value(); }),
        1)
        << "the rest is named";
}

TEST(SessionCall, SendsTheDefinitionOfAZoneHoweverItIsGiven)
{
    const World world;
    std::string body;
    world.server->setFault([&](const URLRequest& request, const auto&) -> std::optional<Reply> {
        body = std::string(request.body.view());
        return std::nullopt;
    });
    const auto zone = TimeZone::withIdentifier("Europe/Berlin").value().vTimeZone();
    for (const auto& given : {std::string("Europe/Berlin"), zone,
             "BEGIN:VCALENDAR\r\nVERSION:2.0\r\n" + zone + "END:VCALENDAR\r\n"}) {
        EXPECT_EQ(told(wait(world.session->createCalendar(
                      {.color = "#12AB34ff", .order = "-3", .timeZone = given}))),
            "done");
        const auto calendar = body.find("BEGIN:VCALENDAR");
        EXPECT_EQ(calendar, body.rfind("BEGIN:VCALENDAR")) << body;
        EXPECT_LT(calendar, body.find("BEGIN:VTIMEZONE"));
        EXPECT_LT(body.find("TZID:Europe/Berlin"), body.find("END:VTIMEZONE"));
        EXPECT_LT(body.find("END:VTIMEZONE"), body.find("END:VCALENDAR"));
        EXPECT_NE(body.find("END:VCALENDAR"), body.npos);
    }
}

TEST(SessionCall, TakesNoCalendarForAResource)
{
    const World world;
    const auto one = eventText("one");
    const auto two = eventText("two");
    const auto start = two.find("BEGIN:VEVENT");
    const auto other = two.substr(start, two.find("END:VCALENDAR") - start);
    auto calendar = one;
    world.server->put("/home/c", calendar.insert(one.find("END:VCALENDAR"), other));
    const auto fetched = wait(world.session->fetch("/home/c"));
    EXPECT_TRUE(told(fetched).starts_with("malformed")) << told(fetched);
    EXPECT_TRUE(told(wait(world.session->remove({"/home/c", {}, calendar}))).starts_with("malf"));
    EXPECT_EQ(world.server->asked("DELETE"), 0u);
}

TEST(SessionCall, SaysWhatIsWrongAndWhatToDo)
{
    const ScriptedServer plain([](const URLRequest&) {
        return ScriptedAnswer {.bytes = "HTTP/1.1 404 No\r\nContent-Length: 0\r\n\r\n"};
    });
    const auto says = [](const auto& result, const std::string& kind, const std::string& words) {
        const auto said = told(result);
        EXPECT_TRUE(said.starts_with(kind + ":")) << said;
        EXPECT_NE(said.find(words), said.npos) << words << " is not in: " << said;
    };
    const auto open = [](const std::string& server, const Credential& credential) {
        return wait(Session::open({.server = server, .user = "alice"}, credential));
    };
    const auto secure = "https" + plain.url("").substr(4);
    {
        const UseTransport use(std::make_shared<TransportWithoutTLS>());
        says(open(secure, Password {"x"}), "untrusted", "does not speak TLS at this port");
    }
    {
        const UseTransport use(std::make_shared<MCurlNetworkManager>(
            MNetworkConfiguration {.authorityFile = "/nowhere/authorities.pem"}));
        says(open(secure, Password {"x"}), "untrusted", "file of authorities cannot be read");
    }
    says(open(plain.url(""), Password {"x"}), "notSent", "SessionSettings::allowsPlainHTTP");

    const World world;
    auto& session = *world.session;
    const auto noSharing = "this server offers no sharing";
    says(wait(session.sharees("/home/a/")), "unsupported", noSharing);
    says(wait(session.unshareAll("/home/a/")), "unsupported", noSharing);
    says(wait(session.invitations()), "unsupported", noSharing);

    int status = 409;
    world.server->setFault(
        [&](const URLRequest&, const auto&) { return std::optional(Reply {.status = status}); });
    const auto event = EventText::read(eventText("two")).value();
    const auto noCalendar = "or there is no such calendar";
    says(wait(session.create("/home/none/", event)), "conflict", noCalendar);
    says(wait(session.move({"/home/a/one.ics", "\"1\"", {}}, "/no/")), "conflict", noCalendar);
    EXPECT_EQ(told(wait(session.fetch("/home/a/one.ics"))).find(noCalendar), std::string::npos);

    status = 401;
    says(wait(session.fetch("/home/a/one.ics")), "unauthorized", "password");
    const auto elsewhere = std::make_shared<PasswordAuth>(
        Origin::ofServer("https://other.example").value(), "alice", "secret");
    says(open("server.example", elsewhere), "notSent", "carried no credential");

    // Who asks a failure for its value is told why there is none.
    try {
        (void)wait(session.fetch("/home/a/one.ics")).value();
        ADD_FAILURE() << "there is no value";
    } catch (const std::logic_error& error) {
        EXPECT_NE(std::string(error.what()).find("password"), std::string::npos) << error.what();
    }
}
