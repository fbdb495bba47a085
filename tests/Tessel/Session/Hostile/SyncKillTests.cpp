#include "tests/Tessel/Session/Store/StoreSnapshot.h"
#include "tests/Tessel/Session/World.h"
#include "tests/support/ChildProcess.h"

#include <gtest/gtest.h>

#include <random>

using namespace Tessel;
using namespace Tessel::Test;

// A process that syncs is killed at random moments; the next one goes on. A program of its own,
// whose first process has no threads.

namespace {

/// The server after so many rounds of what others do there.
std::unique_ptr<World> worldAfter(int rounds)
{
    auto world = std::make_unique<World>();
    auto& server = *world->server;
    server.page = 6;
    std::mt19937 random(3);
    for (int round = 0; round <= rounds; ++round) {
        for (int i = 0; i < (round == 0 ? 120 : 30); ++i) {
            const auto number = std::to_string(random() % 150);
            const auto* const calendar = random() % 3 == 0 ? "/home/b/" : "/home/a/";
            const auto place = calendar + number + ".ics";
            if (random() % 4 == 0 && server.text(place)) {
                server.remove(place);
            } else {
                server.put(place, eventText(number + " of round " + std::to_string(round)));
            }
        }
        if (round % 10 == 9) server.expireTokens();
        if (round % 25 == 24) server.addCalendar("/home/c" + std::to_string(1000 + round) + "/");
    }
    return world;
}

int sync(const std::filesystem::path& file, int round)
{
    const auto world = worldAfter(round);
    const auto synced = wait(world->session->sync(openStore(file)));
    return synced && synced.value().isComplete() ? 0 : 1;
}

constexpr int wasHalfway = 100;

/// Syncs to the end and compares with what the server holds.
int syncAndCompare(const std::filesystem::path& file, int round)
{
    const auto world = worldAfter(round);
    const auto& server = *world->server;
    const auto store = openStore(file);
    const auto before = snapshotOf(*store);
    const auto synced = wait(world->session->sync(store));
    if (!synced || !synced.value().isComplete()) return 1;
    std::size_t same = 0;
    std::size_t others = 0;
    for (const auto& calendar : store->calendars().value()) {
        store->visit(calendar.href, [&](const Resource& resource) {
            ++(server.text(resource.href) == resource.text ? same : others);
            return true;
        });
    }
    if (others > 0 || same != server.resourceCount()) return 2;
    const bool hasBegun = before.find("of round " + std::to_string(round)) != before.npos;
    return hasBegun && before != snapshotOf(*store) ? wasHalfway : 0;
}

} // namespace

TEST(SyncKill, TheNextSyncEndsWithTheServersState)
{
    const TemporaryDirectory directory;
    std::mt19937 random(11);
    // Follows what a sync takes, so that kills come before, within and after.
    double longest = 50'000;
    int halfway = 0;
    for (int round = 0; round < 200; ++round) {
        // Every twentieth is the first sync of all.
        const auto file = directory.path() / std::to_string(round / 20);
        ChildProcess syncing([&] { return sync(file, round); });
        const auto pause = longest * (0.3 + 0.7 * double(random() % 1000) / 1000);
        const bool wasInTime = syncing.killAfter(std::chrono::microseconds(int(pause))) == 0;
        ChildProcess next([&] { return syncAndCompare(file, round); });
        const auto result = next.wait();
        ASSERT_TRUE(result == 0 || result == wasHalfway) << result << " after kill " << round;
        if (result == wasHalfway) {
            ++halfway;
        } else {
            longest *= wasInTime ? 0.9 : 1.1;
        }
    }
    EXPECT_GT(halfway, 20) << "the kills came before or after everything";
}
