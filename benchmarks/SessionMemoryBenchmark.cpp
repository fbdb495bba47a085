#include "Tessel/Platform/Foundation/Base/FatalError.h"
#include "benchmarks/CannedCalendar.h"
#include "benchmarks/Corpus.h"
#include "benchmarks/HeapUse.h"
#include "benchmarks/Table.h"

#include <chrono>
#include <memory>
#include <thread>

using namespace Tessel;
using namespace Tessel::Benchmarks;

namespace {

constexpr std::size_t manyEvents = 50'000;
constexpr std::size_t batchSize = 100;

/// What a first sync has allocated at its peak beyond what the host has in the end: the store, and
/// the call with its changes.
double peakBeyondHeld(const LoopbackServer& server, std::size_t events)
{
    const auto session = CannedCalendar::open(server);
    const auto store = std::make_shared<MemoryStore>();
    resetHeldPeak();
    const auto call = session->sync(store, {});
    while (!call.isDone())
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    const auto peak = peakHeldBytes();
    if (wait(call).value().calendars.front().added.size() != events)
        fatalError("not every event has arrived");
    return double(peak) - double(heldBytes());
}

} // namespace

int main()
{
    const auto server = CannedCalendar::serve(corpusEvents);
    const auto bigServer = CannedCalendar::serve(manyEvents);
    const auto batch = double(multigetAnswer(batchSize).size());

    const auto peak = peakBeyondHeld(server, corpusEvents);
    printRow("session: peak memory of the first sync, MB: one batch", {peak / 1e6, batch / 1e6},
        "MB", timesCost(4));
    const auto bigPeak = peakBeyondHeld(bigServer, manyEvents);
    printRow("session: the same of 50,000 events, MB: one batch", {bigPeak / 1e6, batch / 1e6},
        "MB", timesCost(4));
}
