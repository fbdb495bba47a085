#include "Platform/Foundation/OperationQueue.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdlib>
#include <fstream>
#include <future>
#include <memory>
#include <mutex>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

using namespace Tessel;
using namespace std::chrono_literals;

namespace {

struct Work : Operation {
    explicit Work(std::function<void()> work = [] {})
        : work(std::move(work))
    {
    }
    void main() override { work(); }
    std::function<void()> work;
};

/// Executes from its start until it is told that it has ended.
struct Exchange : Operation {
    std::atomic<bool> executing {false};
    std::atomic<bool> ended {false};

    bool isConcurrent() const override { return true; }
    bool isExecuting() const override { return executing; }
    bool isFinished() const override { return ended; }
    void start() override
    {
        executing = true;
        if (isCancelled()) end();
    }
    void end()
    {
        willChangeValue("isFinished");
        executing = false;
        ended = true;
        didChangeValue("isFinished");
    }
};

void waitFor(const std::function<bool()>& condition)
{
    const auto deadline = std::chrono::steady_clock::now() + 60s;
    while (!condition()) {
        ASSERT_LT(std::chrono::steady_clock::now(), deadline);
        std::this_thread::sleep_for(1ms);
    }
}

template <class T> T value(std::future<T> future)
{
    if (future.wait_for(60s) != std::future_status::ready) throw std::runtime_error("never came");
    return future.get();
}

int threadsInProcess()
{
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);) {
        if (line.starts_with("Threads:")) return std::stoi(line.substr(8));
    }
    return -1;
}

} // namespace

TEST(OperationQueue, IsUnlimitedUntilToldOtherwise)
{
    OperationQueue queue;
    EXPECT_EQ(queue.maxConcurrentOperationCount(), -1);
    std::vector<std::shared_ptr<Exchange>> running;
    for (int i = 0; i < 100; ++i) {
        queue.addOperation(running.emplace_back(std::make_shared<Exchange>()));
    }
    for (const auto& exchange : running)
        waitFor([&] { return exchange->isExecuting(); });
    EXPECT_EQ(queue.operationCount(), 100u);
    for (const auto& exchange : running)
        exchange->end();
    EXPECT_EQ(queue.operationCount(), 0u);
}

TEST(OperationQueue, NeverExecutesMoreThanItsLimit)
{
    OperationQueue queue;
    queue.setMaxConcurrentOperationCount(3);
    std::atomic<int> starts {0};
    struct Counted : Exchange {
        std::atomic<int>* starts = nullptr;
        void start() override
        {
            Exchange::start();
            ++*starts;
        }
    };
    std::vector<std::shared_ptr<Counted>> all;
    for (int i = 0; i < 8; ++i) {
        all.push_back(std::make_shared<Counted>());
        all.back()->starts = &starts;
        queue.addOperation(all.back());
    }
    for (int i = 0; i < 5; ++i) {
        waitFor([&] { return starts == 3 + i; });
        std::this_thread::sleep_for(5ms);
        EXPECT_EQ(starts, 3 + i);
        all[i]->end();
    }
    queue.setMaxConcurrentOperationCount(0);
    for (int i = 5; i < 8; ++i)
        all[i]->end();
    std::promise<void> ran;
    queue.addOperation([&] { ran.set_value(); });
    auto future = ran.get_future();
    EXPECT_EQ(future.wait_for(10ms), std::future_status::timeout);
    queue.setMaxConcurrentOperationCount(1);
    value(std::move(future));
}

TEST(OperationQueue, SerialStartsInOrderOfAddingAmongTheReady)
{
    OperationQueue queue;
    queue.setMaxConcurrentOperationCount(1);
    const auto gate = std::make_shared<Exchange>();
    const auto hold = std::make_shared<Exchange>();
    std::vector<int> order;
    const auto late = std::make_shared<Work>([&] { order.push_back(1); });
    late->addDependency(gate);
    queue.addOperation(hold);
    queue.addOperation(late);
    for (int i = 2; i < 1000; ++i)
        queue.addOperation([&order, i] { order.push_back(i); });
    gate->end();
    hold->end();
    queue.waitUntilAllOperationsAreFinished();
    ASSERT_EQ(order.size(), 999u);
    EXPECT_TRUE(std::is_sorted(order.begin(), order.end()));
}

TEST(OperationQueue, AnOperationThatIsNotReadyHoldsUpNobody)
{
    OperationQueue queue;
    queue.setMaxConcurrentOperationCount(1);
    const auto gate = std::make_shared<Exchange>();
    const auto blocked = std::make_shared<Work>();
    blocked->addDependency(gate);
    std::promise<void> ran;
    queue.addOperation(blocked);
    queue.addOperation([&] { ran.set_value(); });
    value(ran.get_future());
    EXPECT_FALSE(blocked->isFinished());
    blocked->cancel();
    blocked->waitUntilFinished();
    gate->end();
}

TEST(OperationQueue, ADependencyMayBeInAnotherQueue)
{
    OperationQueue first;
    OperationQueue second;
    std::atomic<bool> firstRan {false};
    std::promise<bool> orderly;
    const auto early = std::make_shared<Exchange>();
    const auto late = std::make_shared<Work>([&] { orderly.set_value(firstRan); });
    late->addDependency(early);
    second.addOperation(late);
    first.addOperation(early);
    std::this_thread::sleep_for(5ms);
    firstRan = true;
    early->end();
    EXPECT_TRUE(value(orderly.get_future()));
}

TEST(OperationQueue, CancellingWhatWaitsFinishesItAndFreesItsDependents)
{
    OperationQueue queue;
    const auto never = std::make_shared<Exchange>();
    std::atomic<bool> mainRan {false};
    std::atomic<int> announced {0};
    std::promise<void> completed;
    std::promise<void> dependentRan;
    const auto cancelled = std::make_shared<Work>([&] { mainRan = true; });
    cancelled->addDependency(never);
    cancelled->addObserver("isFinished", [&](auto&, auto, auto) { ++announced; });
    cancelled->setCompletionBlock([&] { completed.set_value(); });
    const auto dependent = std::make_shared<Work>([&] { dependentRan.set_value(); });
    dependent->addDependency(cancelled);
    queue.addOperation(dependent);
    queue.addOperation(cancelled);

    queue.addOperation(never);
    waitFor([&] { return never->isExecuting(); });
    cancelled->cancel();
    value(completed.get_future());
    value(dependentRan.get_future());
    EXPECT_FALSE(mainRan);
    EXPECT_EQ(announced, 2);
    never->end();
    queue.waitUntilAllOperationsAreFinished();

    queue.setMaxConcurrentOperationCount(0);
    for (int i = 0; i < 10; ++i)
        queue.addOperation([&] { mainRan = true; });
    queue.cancelAllOperations();
    queue.setMaxConcurrentOperationCount(2);
    queue.waitUntilAllOperationsAreFinished();
    EXPECT_FALSE(mainRan);
}

TEST(OperationQueue, WhatEndsBeforeItsStartIsNotStarted)
{
    OperationQueue queue;
    queue.setMaxConcurrentOperationCount(1);
    const auto running = std::make_shared<Exchange>();
    auto waiting = std::make_shared<Exchange>();
    queue.addOperation(running);
    queue.addOperation(waiting);
    waiting->end();
    EXPECT_EQ(queue.operationCount(), 1u);
    waiting->end();
    const std::weak_ptr weak = waiting;
    waiting = nullptr;
    EXPECT_TRUE(weak.expired());
    running->end();
    EXPECT_EQ(queue.operationCount(), 0u);
}

TEST(OperationQueue, LivesAsLongAsItHoldsAnOperationAndLetsGoThen)
{
    std::weak_ptr<Exchange> weak;
    std::weak_ptr<int> captured;
    std::promise<bool> releasedFirst;
    {
        OperationQueue queue;
        queue.setMaxConcurrentOperationCount(1);
        const auto exchange = std::make_shared<Exchange>();
        const auto held = std::make_shared<int>();
        exchange->setCompletionBlock([held] {});
        weak = exchange;
        captured = held;
        queue.addOperation(exchange);
        queue.addOperation([&] { releasedFirst.set_value(true); });
    }
    {
        const auto held = weak.lock();
        ASSERT_TRUE(held);
        waitFor([&] { return held->isExecuting(); });
        held->end();
    }
    EXPECT_TRUE(value(releasedFirst.get_future()));
    waitFor([&] { return weak.expired() && captured.expired(); });
}

TEST(OperationQueue, ACompletionBlockMayDropTheQueueAndAddToIt)
{
    auto queue = std::make_unique<OperationQueue>();
    queue->setMaxConcurrentOperationCount(1);
    std::promise<bool> finishedFirst;
    std::promise<void> added;
    const auto operation = std::make_shared<Work>();
    operation->setCompletionBlock([&] {
        queue->addOperation([&added] { added.set_value(); });
        queue = nullptr;
        finishedFirst.set_value(true);
    });
    queue->addOperation(operation);
    EXPECT_TRUE(value(finishedFirst.get_future()));
    value(added.get_future());
}

TEST(OperationQueue, ACompletionBlockFindsItsOperation)
{
    for (int i = 0; i < 1000; ++i) {
        std::promise<bool> found;
        std::weak_ptr<Operation> weak;
        {
            const auto operation = std::make_shared<Work>();
            weak = operation;
            operation->setCompletionBlock([&found, self = weak] {
                const auto held = self.lock();
                found.set_value(held && held->isFinished());
            });
            OperationQueue().addOperation(operation);
        }
        EXPECT_TRUE(value(found.get_future()));
        waitFor([&] { return weak.expired(); });
    }
}

TEST(OperationQueue, HostCodeMayReenterFromObserversAndDestructors)
{
    struct Reentering : Work {
        using Work::Work;
        OperationQueue* queue = nullptr;
        std::promise<void>* destroyed = nullptr;
        ~Reentering() override
        {
            queue->cancelAllOperations();
            queue->addOperation([promise = destroyed] { promise->set_value(); });
        }
    };
    OperationQueue queue;
    std::promise<void> destroyed;
    std::promise<std::size_t> counted;
    {
        const auto operation = std::make_shared<Reentering>();
        operation->queue = &queue;
        operation->destroyed = &destroyed;
        operation->addObserver("isFinished", [&](auto&, auto, auto change) {
            if (change == Operation::Change::did) counted.set_value(queue.operationCount());
        });
        queue.addOperation(operation);
    }
    EXPECT_EQ(value(counted.get_future()), 1u);
    value(destroyed.get_future());
    queue.waitUntilAllOperationsAreFinished();
}

TEST(OperationQueue, TenThousandExchangesNeedAHandfulOfThreads)
{
    std::vector<std::shared_ptr<Exchange>> exchanges;
    for (int i = 0; i < 10'000; ++i) {
        OperationQueue().addOperation(exchanges.emplace_back(std::make_shared<Exchange>()));
    }
    for (const auto& exchange : exchanges)
        waitFor([&] { return exchange->isExecuting(); });
    EXPECT_LT(threadsInProcess(), 12);
    for (const auto& exchange : exchanges)
        exchange->end();
}

TEST(OperationQueue, AChainOfAHundredThousandCostsLinearTime)
{
    const auto run = [](int length) {
        OperationQueue queue;
        queue.setMaxConcurrentOperationCount(1);
        const auto start = std::chrono::steady_clock::now();
        int sum = 0;
        std::shared_ptr<Operation> next;
        const auto gate = std::make_shared<Exchange>();
        std::shared_ptr<Operation> previous = gate;
        for (int i = 0; i < length; ++i) {
            next = std::make_shared<Work>([&sum] { ++sum; });
            next->addDependency(std::exchange(previous, next));
            queue.addOperation(next);
        }
        gate->end();
        queue.waitUntilAllOperationsAreFinished();
        EXPECT_EQ(sum, length);
        return std::chrono::steady_clock::now() - start;
    };
    run(1000);
    const auto small = run(10'000);
    EXPECT_LT(run(100'000), 40 * small);
}

TEST(OperationQueue, ALongSerialQueueFilledBackwardsCostsLinearTime)
{
    const auto run = [](int length) {
        OperationQueue queue;
        queue.setMaxConcurrentOperationCount(1);
        std::vector<std::shared_ptr<Exchange>> gates;
        std::vector<int> order;
        const auto start = std::chrono::steady_clock::now();
        const auto hold = std::make_shared<Exchange>();
        queue.addOperation(hold);
        for (int i = 0; i < length; ++i) {
            const auto work = std::make_shared<Work>([&order, i] { order.push_back(i); });
            work->addDependency(gates.emplace_back(std::make_shared<Exchange>()));
            queue.addOperation(work);
        }
        for (; !gates.empty(); gates.pop_back())
            gates.back()->end();
        hold->end();
        queue.waitUntilAllOperationsAreFinished();
        EXPECT_EQ(order.size(), std::size_t(length));
        EXPECT_TRUE(std::is_sorted(order.begin(), order.end()));
        return std::chrono::steady_clock::now() - start;
    };
    run(1000);
    const auto small = run(10'000);
    EXPECT_LT(run(100'000), 40 * small);
}

TEST(OperationQueue, ThreadsMayAddCancelWaitAndResizeAtOnce)
{
    OperationQueue shared;
    std::atomic<int> completed {0};
    std::atomic<int> cancelled {0};
    constexpr int rounds = 1000;
    const auto host = [&](int seed) {
        std::shared_ptr<Operation> previous;
        for (int i = 0; i < rounds; ++i) {
            const auto work = std::make_shared<Work>();
            work->setCompletionBlock([&, self = std::weak_ptr(work)] {
                if (const auto held = self.lock(); held && held->isCancelled()) ++cancelled;
                ++completed;
            });
            if (previous && (i + seed) % 3 != 0) work->addDependency(previous);
            if (i % 2 == 0) {
                shared.addOperation(work);
            } else {
                OperationQueue().addOperation(work);
            }
            if ((i + seed) % 5 == 0) work->cancel();
            if ((i + seed) % 50 == 0) shared.setMaxConcurrentOperationCount(1 + i % 3);
            if ((i + seed) % 100 == 0) work->waitUntilFinished();
            previous = work;
        }
    };
    std::vector<std::thread> hosts;
    for (int i = 0; i < 4; ++i)
        hosts.emplace_back(host, i);
    for (auto& thread : hosts)
        thread.join();
    shared.waitUntilAllOperationsAreFinished();
    waitFor([&] { return completed == 4 * rounds; });
}

class OperationQueueDeathTest : public testing::Test {
protected:
    OperationQueueDeathTest() { GTEST_FLAG_SET(death_test_style, "threadsafe"); }
};

TEST_F(OperationQueueDeathTest, AnOperationIsAddedOnceAndBeforeItsStart)
{
    EXPECT_DEATH(
        {
            OperationQueue queue;
            queue.setMaxConcurrentOperationCount(0);
            const auto operation = std::make_shared<Operation>();
            queue.addOperation(operation);
            OperationQueue().addOperation(operation);
        },
        "fatal error: an operation is added to a queue");
    EXPECT_DEATH(
        {
            const auto operation = std::make_shared<Operation>();
            operation->start();
            OperationQueue().addOperation(operation);
        },
        "fatal error: an operation is added to a queue");
    EXPECT_DEATH(OperationQueue().setMaxConcurrentOperationCount(-2), "fatal error: a queue");
}

TEST_F(OperationQueueDeathTest, AnExceptionThatLeavesAnOperationEndsTheProcess)
{
    const auto throwing = [] {
        OperationQueue queue;
        queue.addOperation([] { throw std::runtime_error("lost"); });
        queue.waitUntilAllOperationsAreFinished();
    };
    EXPECT_DEATH(throwing(), "lost");
}

namespace {

std::vector<std::shared_ptr<std::string>> results;
std::mutex resultsMutex;

/// Work that waits, runs and is queued, all of it using objects that the exit destroys.
void keepBusy()
{
    OperationQueue serial;
    serial.setMaxConcurrentOperationCount(1);
    for (int i = 0; i < 1000; ++i) {
        serial.addOperation(std::make_shared<Exchange>());
        OperationQueue().addOperation([] {
            std::this_thread::sleep_for(100us);
            const std::lock_guard lock(resultsMutex);
            results.push_back(std::make_shared<std::string>(100, 'x'));
        });
    }
    waitFor([] {
        const std::lock_guard lock(resultsMutex);
        return !results.empty();
    });
}

struct JoinsAtExit {
    std::thread waiting;
    ~JoinsAtExit() { waiting.join(); }
};

struct WaitsAtExit {
    OperationQueue queue;
    ~WaitsAtExit() { queue.waitUntilAllOperationsAreFinished(); }
};

} // namespace

TEST_F(OperationQueueDeathTest, TheProcessExitsCleanlyWithOperationsInFlight)
{
    const auto exitsFromHostThread = [] {
        keepBusy();
        std::exit(7);
    };
    EXPECT_EXIT(exitsFromHostThread(), testing::ExitedWithCode(7), "^$");

    const auto exitsFromWorker = [] {
        keepBusy();
        OperationQueue().addOperation([] { std::exit(8); });
        std::this_thread::sleep_for(60s);
    };
    EXPECT_EXIT(exitsFromWorker(), testing::ExitedWithCode(8), "^$");

    const auto waitsWhileExiting = [] {
        static WaitsAtExit waits;
        waits.queue.addOperation(std::make_shared<Exchange>());
        std::exit(9);
    };
    EXPECT_EXIT(waitsWhileExiting(), testing::ExitedWithCode(9), "^$");

    const auto exitsWhileWaitedFor = [] {
        static JoinsAtExit joins; // older than the first operation, so destroyed later
        const auto endless = std::make_shared<Exchange>();
        OperationQueue().addOperation(endless);
        joins.waiting = std::thread([endless] { endless->waitUntilFinished(); });
        std::this_thread::sleep_for(50ms);
        std::exit(10);
    };
    EXPECT_EXIT(exitsWhileWaitedFor(), testing::ExitedWithCode(10), "^$");
}
