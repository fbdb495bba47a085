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

/// CPU seconds of the whole process from handing over the first no-op until the last has run: the
/// caller's, the workers' and those of waking them. Time on the clock would count the machine's
/// other work as well.
double secondsOf(const std::function<void(Block)>& add)
{
    return cpuOf([&add] {
        std::atomic<int> left {operationCount};
        for (int i = 0; i < operationCount; ++i) {
            add([&left] {
                if (--left == 0) left.notify_one();
            });
        }
        for (int now = left; now != 0; now = left)
            left.wait(now);
    });
}

double median(std::vector<double> values)
{
    const auto middle = values.begin() + std::ptrdiff_t(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

/// The cost of the middle one of many rounds in turns: how often a worker sleeps, and must be
/// woken, differs from round to round on both sides.
Costs compare(const std::function<void(Block)>& ours)
{
    PlainQueue plain;
    std::vector<double> own;
    std::vector<double> opponents;
    for (int i = 0; i < rounds; ++i) {
        own.push_back(secondsOf(ours));
        opponents.push_back(secondsOf([&](Block block) { plain.add(std::move(block)); }));
    }
    return {median(std::move(own)), median(std::move(opponents))};
}

void runNoOps()
{
    const std::string what = std::to_string(operationCount) + " no-op operations, ";
    OperationQueue shared;
    printRow(what + "one queue: mutex, condition variable, one worker",
        compare([&](Block block) { shared.addOperation(std::move(block)); }), "s", timesCost(6));

    OperationQueue serial;
    serial.setMaxConcurrentOperationCount(1);
    printRow(what + "serial queue: mutex, condition variable, one worker",
        compare([&](Block block) { serial.addOperation(std::move(block)); }), "s", timesCost(6));

    printRow(what + "a queue each: mutex, condition variable, one worker",
        compare([](Block block) { OperationQueue().addOperation(std::move(block)); }), "s",
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
