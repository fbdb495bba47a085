#include "tests/Tessel/Session/Hostile/HostileAccount.h"

#include <gtest/gtest.h>

#include <thread>

using namespace Tessel;
using namespace Tessel::Test;
using namespace std::chrono_literals;

namespace {

std::unique_ptr<WireServer> silentServer()
{
    return std::make_unique<WireServer>(
        WireServer::Fault {.answer = {.end = ScriptedAnswer::End::stall}, .from = 0, .lasts = true},
        "");
}

bool isUnderWay(HostileAccount& account)
{
    return waitFor([&] { return !account.server().requests().empty(); });
}

/// Whether the transport has let go of all that it did for the account.
bool isQuiet(HostileAccount& account)
{
    return waitFor([&] { return account.server().openConnectionCount() == 0; });
}

} // namespace

TEST(HostileLoad, TenThousandCallsAtOnceEndOnceEach)
{
    HostileAccount account(std::make_unique<WireServer>());
    const auto& calls = sessionCalls();
    std::vector<Told> told(10'000);
    for (std::size_t i = 0; i < told.size(); ++i) {
        // Among the many, each of the others a few times.
        if (i % 100 == 0) {
            calls[i / 100 % calls.size()].make(account, told[i]);
        } else {
            account.session->fetch("/home/a/two.ics", told[i]);
        }
    }
    for (const auto& each : told)
        ASSERT_TRUE(each.wait());
    account.session = nullptr;
    for (const auto& each : told)
        EXPECT_EQ(each.count(), 1u);
}

/// Sessions go at any moment of their calls, most of which their server never answers.
TEST(HostileLoad, AThousandSessionsGoWithEverythingUnderWay)
{
    HostileAccount silent(silentServer());
    HostileAccount honest(std::make_unique<WireServer>());
    const auto& calls = sessionCalls();
    std::vector<Told> told;
    for (int i = 0; i < 1000; ++i) {
        auto& account = i % 4 == 0 ? honest : silent;
        account.renew();
        for (int each = 0; each < 8; ++each) {
            const auto& call = calls[std::size_t(i + each) % calls.size()];
            const auto handle = call.make(account, told.emplace_back());
            if (call.name == std::string_view("open")) handle.cancel(); // which is of no session
        }
        // Others go on a thread of the library, with their last call.
        if (i % 8 == 4) account.session->calendars([own = account.session](const auto&) {});
        if (i % 8 == 0) std::this_thread::sleep_for(std::chrono::microseconds(i * 5));
    }
    silent.session = honest.session = nullptr;
    for (const auto& each : told)
        ASSERT_TRUE(each.wait());
    EXPECT_TRUE(isQuiet(silent)) << "transfers run on though nobody waits for them";
    for (const auto& each : told)
        EXPECT_EQ(each.count(), 1u);
}

TEST(HostileLoad, ACallThatEndsEarlyStopsItsTransfer)
{
    const std::pair<const char*, void (*)(HostileAccount&, const CallHandle&)> ends[] {
        {"cancelled", [](HostileAccount&, const CallHandle& call) { call.cancel(); }},
        {"with its session",
            [](HostileAccount& account, const CallHandle&) { account.session = nullptr; }},
    };
    for (const auto& [name, end] : ends) {
        HostileAccount account(silentServer());
        const Told told;
        const auto call = account.session->calendars(told);
        ASSERT_TRUE(isUnderWay(account)) << name;
        end(account, call);
        ASSERT_TRUE(told.wait()) << name;
        EXPECT_EQ(told.failure()->kind, FailureKind::cancelled) << name;
        EXPECT_TRUE(isQuiet(account)) << name;
    }

    // It moves all the time, so that only the limit ends it.
    HostileAccount account(
        std::make_unique<WireServer>(
            WireServer::Fault {.answer
                = {.bytes = "HTTP/1.1 200 OK\r\n\r\n" + std::string(100'000, 'x'), .pause = 10ms},
                .from = 0},
            ""),
        100ms);
    const Told told;
    account.session->calendars(told);
    ASSERT_TRUE(told.wait());
    EXPECT_EQ(told.failure()->kind, FailureKind::timedOut);
    EXPECT_TRUE(isQuiet(account));
}
