#include "Tessel/Platform/Foundation/Base/FatalError.h"
#include "benchmarks/CannedCalendar.h"
#include "benchmarks/Corpus.h"
#include "benchmarks/PlainSync.h"
#include "benchmarks/ProcessUsage.h"
#include "benchmarks/Table.h"

#include <algorithm>
#include <chrono>
#include <functional>
#include <limits>
#include <memory>

using namespace Tessel;
using namespace Tessel::Benchmarks;

namespace {

constexpr int rounds = 7;
constexpr std::size_t smallCalendar = 100;
constexpr auto most = std::numeric_limits<double>::max();

std::size_t syncOnce(Session& session, const std::shared_ptr<Store>& store)
{
    const auto changes = wait(session.sync(store, {}));
    if (!changes || !changes.value().isComplete()) fatalError("the sync was not whole");
    return changes.value().calendars.front().added.size();
}

Costs firstSync(Session& session, PlainSync& plain)
{
    const auto requireAll = [](std::size_t count) {
        if (count != corpusEvents) fatalError("not every event has arrived");
    };
    return cpuInTurns(
        rounds, [&] { requireAll(syncOnce(session, std::make_shared<MemoryStore>())); },
        [&] { requireAll(plain.sync().size()); });
}

/// A calendar that does not change, held already, at a server that takes a millisecond to answer,
/// as one next door does: a request to this very machine costs less than handing its answer from
/// one thread to another.
class Unchanged {
public:
    explicit Unchanged(std::size_t events)
        : server_(CannedCalendar::serve(events, std::chrono::milliseconds(1)))
    {
    }

    /// Once all servers are there.
    void open()
    {
        session_ = CannedCalendar::open(server_);
        plain_ = std::make_unique<PlainSync>(server_);
        syncOnce(*session_, store_);
    }
    void sync() { keep(syncOnce(*session_, store_)); }
    void ask() { plain_->ask(); }

private:
    const LoopbackServer server_;
    Session::Opened session_;
    std::unique_ptr<PlainSync> plain_;
    const std::shared_ptr<Store> store_ = std::make_shared<MemoryStore>();
};

/// Of one of many.
double wallOfEach(const std::function<void()>& work)
{
    constexpr int many = 100;
    return wallOf([&] {
        for (int i = 0; i < many; ++i)
            work();
    }) / many;
}

Costs againstOneRequest(Unchanged& calendar)
{
    Costs best {most, most};
    for (int i = 0; i < rounds; ++i) {
        best.ours = std::min(best.ours, wallOfEach([&] { calendar.sync(); }));
        best.opponent = std::min(best.opponent, wallOfEach([&] { calendar.ask(); }));
    }
    return best;
}

Costs againstSmall(Unchanged& big, Unchanged& small)
{
    return cpuInTurns(
        rounds, [&] { wallOfEach([&] { big.sync(); }); },
        [&] { wallOfEach([&] { small.sync(); }); });
}

} // namespace

int main()
{
    stayOnOneCore();
    const auto server = CannedCalendar::serve(corpusEvents);
    Unchanged big(corpusEvents);
    Unchanged small(smallCalendar);
    PlainSync plain(server);
    const auto session = CannedCalendar::open(server);
    big.open();
    small.open();

    printRow("session: 7 first syncs of 10,000, one core, CPU: plain", firstSync(*session, plain),
        "s", timesCost(1.5));
    printRow("session: sync without changes of 100, wall: one request", againstOneRequest(small),
        "s", timesCost(2));
    printRow("session: the same of 10,000, wall: one request", againstOneRequest(big), "s",
        timesCost(2));
    printRow("session: 700 of the same of 10,000, CPU: of 100", againstSmall(big, small), "s",
        timesCost(1.25));
}
