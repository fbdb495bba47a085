#include "tests/Tessel/Session/Hostile/HostileAccount.h"

#include "Tessel/Session/Exchange/AnswerFailure.h"

#include <gtest/gtest.h>

#include <atomic>
#include <poll.h>
#include <sys/resource.h>
#include <thread>

using namespace Tessel;
using namespace Tessel::Test;
using namespace std::chrono_literals;

// Every call of a session meets every fault of the transport's scripts, and answers that no honest
// server gives, at each of its requests.

namespace {

constexpr auto shortPatience = 150ms;

struct Cell {
    const SessionCall* call;
    std::string title;
    WireServer::Fault fault;
    bool isLie; ///< the answer may say what is not true

    std::string name() const
    {
        return std::string(call->name) + ", request " + std::to_string(fault.from)
            + (fault.lasts ? " on: " : ": ") + title
            + (fault.isCarriedOut ? ", though carried out" : "")
            + (fault.pause.count() > 0 ? " late" : "");
    }
};

bool isWrite(const WireServer::Request& request)
{
    return changesSomething(request.method);
}

/// How many requests of which kind a call makes when nothing is in its way.
std::vector<WireServer::Request> undisturbed(const SessionCall& call)
{
    HostileAccount account(std::make_unique<WireServer>());
    const Told told;
    call.make(account, told);
    EXPECT_TRUE(told.wait());
    EXPECT_FALSE(told.failure()) << call.name << ": " << told.failure()->reason;
    EXPECT_TRUE(!call.isDone || call.isDone(account)) << call.name;
    return account.server().requests();
}

std::vector<Cell> cells()
{
    const auto load = [](const std::string& file) {
        return Script::load(std::string(TESSEL_TEST_DATA) + file).exchanges;
    };
    const std::string transport = "/../../Platform/Transport/scripts/";
    auto broken = load(transport + "broken-answers.script");
    std::vector<ScriptedExchange> lies {{.title = "a tag of 100 KB",
        .answer = {.bytes = "HTTP/1.1 200 OK\r\nContent-Length: 0\r\nETag: \""
                + std::string(100'000, 'e') + "\"\r\n\r\n"}}};
    for (const auto& file : {std::string("/hostile.script"), transport + "answers.script",
             transport + "compressed.script"}) {
        for (auto& exchange : load(file))
            lies.push_back(std::move(exchange));
    }

    std::vector<Cell> cells;
    for (const auto& call : sessionCalls()) {
        const auto requests = undisturbed(call);
        for (std::size_t i = 0; i < requests.size(); ++i) {
            for (const auto* answers : {&broken, &lies}) {
                const bool isLie = answers == &lies;
                for (const auto& each : *answers) {
                    Cell cell {&call, each.title, {.answer = each.answer, .from = i}, isLie};
                    cells.push_back(cell);
                    cell.fault.isCarriedOut = true;
                    if (!isLie && isWrite(requests[i])) cells.push_back(cell);
                    // Given up by then.
                    cell.fault.pause = 2 * shortPatience;
                    if (&each == &broken.front() && isWrite(requests[i])) cells.push_back(cell);
                    cell.fault.pause = {};
                    cell.fault.isCarriedOut = false;
                    cell.fault.lasts = true;
                    if (i == 0) cells.push_back(std::move(cell));
                }
            }
        }
    }
    return cells;
}

/// A write goes out again only after a look at what became of it, or where the server sends it.
void checkRepeats(const Cell& cell, const std::vector<WireServer::Request>& requests)
{
    if (cell.fault.answer.bytes.starts_with("HTTP/1.1 30")) return;
    for (std::size_t i = 0; i < requests.size(); ++i) {
        if (!isWrite(requests[i])) continue;
        for (std::size_t j = i; j-- > 0 && isWrite(requests[j]);) {
            EXPECT_FALSE(requests[j].metFault && requests[j].method == requests[i].method
                && requests[j].path == requests[i].path)
                << cell.name() << ": " << requests[i].method << " is sent again blindly";
        }
    }
}

void run(const Cell& cell, const std::string& elsewhere, const Told& told)
{
    HostileAccount account(std::make_unique<WireServer>(cell.fault, elsewhere), shortPatience);
    cell.call->make(account, told);
    ASSERT_TRUE(told.wait()) << cell.name();
    const auto failure = told.failure();
    if (failure) {
        EXPECT_FALSE(failure->reason.empty()) << cell.name();
    }
    checkRepeats(cell, account.server().requests());
    std::this_thread::sleep_for(2 * cell.fault.pause);
    if (cell.isLie || !cell.call->isDone || (failure && failure->isUncertain)) return;
    if (failure && cell.call->mayFailThough) return;
    EXPECT_EQ(cell.call->isDone(account), !failure)
        << cell.name() << ": " << (failure ? failure->reason : "done");
}

} // namespace

TEST(HostileFault, MeetsEveryCallAtEachOfItsRequests)
{
    const auto all = cells();
    const Listener elsewhere;
    const auto elsewhereURL = "http://127.0.0.1:" + std::to_string(elsewhere.port);
    std::vector<Told> told(all.size());
    std::atomic<std::size_t> next = 0;
    std::vector<std::thread> threads;
    for (int i = 0; i < 32; ++i) {
        threads.emplace_back([&] {
            for (auto at = next++; at < all.size(); at = next++)
                run(all[at], elsewhereURL, told[at]);
        });
    }
    for (auto& thread : threads)
        thread.join();

    for (std::size_t i = 0; i < all.size(); ++i)
        EXPECT_EQ(told[i].count(), 1u) << all[i].name();
    pollfd connecting {elsewhere.socket, POLLIN, 0};
    EXPECT_EQ(poll(&connecting, 1, 0), 0) << "something was sent to another port";
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
    rusage usage {};
    getrusage(RUSAGE_SELF, &usage);
    EXPECT_LT(usage.ru_maxrss, 400'000) << "of kilobytes, at the most";
#endif
    RecordProperty("cells", int(all.size()));
}

TEST(HostileFault, HidesNoInvitationButThoseBehindAWrongPassword)
{
    const auto invitations = [](const std::string& status) {
        HostileAccount account(std::make_unique<WireServer>(
            WireServer::Fault {
                .answer = {.bytes = "HTTP/1.1 " + status + " No\r\nContent-Length: 0\r\n\r\n"},
                .from = 1},
            ""));
        return wait(account.session->invitations());
    };
    const auto listed = invitations("500").value();
    ASSERT_EQ(listed.size(), 1u);
    EXPECT_EQ(listed[0].kind, Invitation::Kind::unknown);
    EXPECT_EQ(listed[0].failure->kind, FailureKind::serverFault);
    EXPECT_EQ(invitations("401").failure().kind, FailureKind::unauthorized);
    EXPECT_TRUE(invitations("404").value().empty());
}
