#include "Tessel/Platform/Foundation/Operations/OperationQueue.h"
#include "Tessel/Platform/Transport/MCurlNetworkManager.h"
#include "Tessel/Session/Exchange/Timer.h"
#include "Tessel/Session/Opening/ServiceLookup.h"
#include "tests/Tessel/Session/World.h"
#include "tests/support/Callback.h"
#include "tests/support/LogRecorder.h"

#include <gtest/gtest.h>

#include <regex>

using namespace Tessel;
using namespace Tessel::Test;
using namespace std::chrono_literals;

namespace {

using Reply = FakeCalendarServer::Reply;

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
