#include "Tessel/CaldavLibrary/Operation/MOperation.h"
#include "Tessel/Platform/Foundation/Operations/OperationQueue.h"
#include "benchmarks/ProcessUsage.h"
#include "benchmarks/Table.h"

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <deque>
#include <fstream>
#include <functional>
#include <limits>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

using namespace Tessel;
using namespace Tessel::Benchmarks;

namespace {

constexpr int operationCount = 10'000;
constexpr int rounds = 200;

using Block = std::function<void()>;

/// The least that hands blocks to another thread: mutex, condition variable, one worker.
class PlainQueue {
public:
    ~PlainQueue()
    {
        add([this] { stopped_ = true; });
        worker_.join();
    }

    void add(Block block)
    {
        const std::lock_guard lock(mutex_);
        blocks_.push_back(std::move(block));
        wake_.notify_one();
    }

private:
    void work()
    {
        while (!stopped_) {
            std::unique_lock lock(mutex_);
            wake_.wait(lock, [this] { return !blocks_.empty(); });
            const auto block = std::move(blocks_.front());
            blocks_.pop_front();
            lock.unlock();
            block();
        }
    }

    std::mutex mutex_;
    std::condition_variable wake_;
    std::deque<Block> blocks_;
    bool stopped_ = false;
    std::thread worker_ {[this] { work(); }};
};

/// CPU seconds of the whole process from handing over the first no-op until the last has run. The
/// workers are held at a gate meanwhile: how often they would sleep and be woken is decided by what
/// else the machine does, and would be most of what is measured.
double secondsOf(const std::function<void(Block)>& add, int workers)
{
    // Static, since a worker may still be on its way out when the round has ended.
    static std::atomic<bool> isOpen;
    static std::atomic<int> held;
    static std::atomic<int> left;
    isOpen = false;
    for (int i = 0; i < workers; ++i) {
        add([] {
            ++held;
            held.notify_one();
            isOpen.wait(false);
            --held;
            held.notify_one();
        });
    }
    for (int now = held; now != workers; now = held)
        held.wait(now);

    const auto seconds = cpuOf([&add] {
        left = operationCount;
        for (int i = 0; i < operationCount; ++i) {
            add([] {
                if (--left == 0) left.notify_one();
            });
        }
        isOpen = true;
        isOpen.notify_all();
        for (int now = left; now != 0; now = left)
            left.wait(now);
    });
    for (int now = held; now != 0; now = held)
        held.wait(now);
    return seconds;
}

/// The least of many rounds in turns, so that both meet the same neighbours.
Costs compare(const std::function<void(Block)>& ours, int workers)
{
    constexpr auto most = std::numeric_limits<double>::max();
    PlainQueue plain;
    Costs costs {most, most};
    for (int i = 0; i < rounds; ++i) {
        costs.ours = std::min(costs.ours, secondsOf(ours, workers));
        costs.opponent = std::min(
            costs.opponent, secondsOf([&](Block block) { plain.add(std::move(block)); }, 1));
    }
    return costs;
}

void runNoOps()
{
    const std::string what = std::to_string(operationCount) + " no-op operations, ";
    // As many as the library has.
    const int workers = std::clamp(int(std::thread::hardware_concurrency()), 2, 4);
    OperationQueue shared;
    printRow(what + "one queue: mutex, condition variable, one worker",
        compare([&](Block block) { shared.addOperation(std::move(block)); }, workers), "s",
        timesCost(6));

    OperationQueue serial;
    serial.setMaxConcurrentOperationCount(1);
    printRow(what + "serial queue: mutex, condition variable, one worker",
        compare([&](Block block) { serial.addOperation(std::move(block)); }, 1), "s", timesCost(6));

    printRow(what + "a queue each: mutex, condition variable, one worker",
        compare([](Block block) { OperationQueue().addOperation(std::move(block)); }, workers), "s",
        timesCost(6));
}

int threadsInProcess()
{
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);) {
        if (line.starts_with("Threads:")) return std::stoi(line.substr(8));
    }
    return std::numeric_limits<int>::max();
}

struct InFlight : MOperation {
    void main() override { }
};

void countThreads()
{
    std::vector<std::shared_ptr<InFlight>> operations;
    for (int i = 0; i < operationCount; ++i) {
        OperationQueue().addOperation(operations.emplace_back(std::make_shared<InFlight>()));
    }
    for (const auto& operation : operations) {
        while (!operation->isExecuting())
            std::this_thread::yield();
    }
    const auto threads = double(threadsInProcess());
    for (const auto& operation : operations)
        operation->setDone(true);
    printRow(
        "threads with 10000 operations in flight: one thread", {threads, 1}, "", timesCost(11));
}

} // namespace

int main()
{
    runNoOps();
    countThreads();
}
