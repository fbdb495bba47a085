#include "tests/Tessel/Platform/Foundation/Operations/TestOperations.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <fstream>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

using namespace Tessel;
using namespace Tessel::Test;
using namespace std::chrono_literals;

namespace {

/// A queue that executes at most so many operations at a time.
struct LimitedQueue : OperationQueue {
    explicit LimitedQueue(std::ptrdiff_t limit) { setMaxConcurrentOperationCount(limit); }
};

template <class SomeOperation>
std::shared_ptr<SomeOperation> depending(
    const std::shared_ptr<Operation>& dependency, std::shared_ptr<SomeOperation> operation)
{
    operation->addDependency(dependency);
    return operation;
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

TEST(OperationQueue, WithoutALimitExecutesTenThousandExchangesOnAHandfulOfThreads)
{
    OperationQueue queue;
    EXPECT_EQ(queue.maxConcurrentOperationCount(), -1);
    std::vector<std::shared_ptr<Exchange>> running;
    for (int i = 0; i < 10'000; ++i) {
        const auto& exchange = running.emplace_back(std::make_shared<Exchange>());
        i % 2 ? queue.addOperation(exchange) : OperationQueue().addOperation(exchange);
    }
    for (const auto& exchange : running)
        ASSERT_TRUE(waitFor([&] { return exchange->isExecuting(); }));
    EXPECT_LT(threadsInProcess(), 12);
    EXPECT_EQ(queue.operationCount(), 5'000u);
    for (const auto& exchange : running)
        exchange->end();
    EXPECT_EQ(queue.operationCount(), 0u);
}

TEST(OperationQueue, NeverExecutesMoreThanItsLimit)
{
    LimitedQueue queue(3);
    std::vector<std::shared_ptr<Exchange>> all;
    for (int i = 0; i < 8; ++i)
        queue.addOperation(all.emplace_back(std::make_shared<Exchange>()));
    const auto started = [&] {
        return std::count_if(
            all.begin(), all.end(), [](const auto& one) { return one->executing || one->ended; });
    };
    for (int i = 0; i < 5; ++i) {
        ASSERT_TRUE(waitFor([&] { return started() == 3 + i; }));
        std::this_thread::sleep_for(5ms);
        EXPECT_EQ(started(), 3 + i);
        all[i]->end();
    }
    queue.setMaxConcurrentOperationCount(0);
    for (int i = 5; i < 8; ++i)
        all[i]->end();
    const Callback<> ran;
    queue.addOperation(ran);
    EXPECT_FALSE(ran.wait(1, 10ms));
    queue.setMaxConcurrentOperationCount(1);
    EXPECT_TRUE(ran.wait());
}

TEST(OperationQueue, AnOperationThatIsNotReadyHoldsUpNobody)
{
    LimitedQueue queue(1);
    const auto gate = std::make_shared<Exchange>();
    const auto blocked = depending(gate, std::make_shared<Work>());
    const Callback<> ran;
    queue.addOperation(blocked);
    queue.addOperation(ran);
    ASSERT_TRUE(ran.wait());
    EXPECT_FALSE(blocked->isFinished());
    blocked->cancel();
    blocked->waitUntilFinished();
    gate->end();
}

TEST(OperationQueue, ADependencyMayBeInAnotherQueue)
{
    const auto early = std::make_shared<Exchange>();
    const Callback<> ran;
    OperationQueue().addOperation(depending(early, std::make_shared<Work>(ran)));
    OperationQueue().addOperation(early);
    EXPECT_FALSE(ran.wait(1, 5ms));
    early->end();
    EXPECT_TRUE(ran.wait());
}

TEST(OperationQueue, CancellingWhatWaitsFinishesItAndFreesItsDependents)
{
    OperationQueue queue;
    const auto never = std::make_shared<Exchange>();
    const Callback<> mainRan;
    const Callback<> announced;
    const Callback<> completed;
    const Callback<> dependentRan;
    const auto cancelled = depending(never, std::make_shared<Work>(mainRan));
    cancelled->addObserver("isFinished", [=](auto&, auto, auto) { announced(); });
    cancelled->setCompletionBlock(completed);
    queue.addOperation(depending(cancelled, std::make_shared<Work>(dependentRan)));
    queue.addOperation(cancelled);
    queue.addOperation(never);
    ASSERT_TRUE(waitFor([&] { return never->isExecuting(); }));
    cancelled->cancel();
    EXPECT_TRUE(completed.wait());
    EXPECT_TRUE(dependentRan.wait());
    EXPECT_EQ(announced.count(), 2u);
    never->end();
    queue.waitUntilAllOperationsAreFinished();

    queue.setMaxConcurrentOperationCount(0);
    for (int i = 0; i < 10; ++i)
        queue.addOperation(mainRan);
    queue.cancelAllOperations();
    queue.setMaxConcurrentOperationCount(2);
    queue.waitUntilAllOperationsAreFinished();
    EXPECT_EQ(mainRan.count(), 0u);
}

TEST(OperationQueue, WhatEndsBeforeItsStartIsNotStarted)
{
    LimitedQueue queue(1);
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
    const Callback<> ranNext;
    {
        LimitedQueue queue(1);
        const auto exchange = std::make_shared<Exchange>();
        const auto held = std::make_shared<int>();
        exchange->setCompletionBlock([held] {});
        weak = exchange;
        captured = held;
        queue.addOperation(exchange);
        queue.addOperation(ranNext);
    }
    {
        const auto held = weak.lock();
        ASSERT_TRUE(held);
        ASSERT_TRUE(waitFor([&] { return held->isExecuting(); }));
        held->end();
    }
    EXPECT_TRUE(ranNext.wait());
    EXPECT_TRUE(waitFor([&] { return weak.expired() && captured.expired(); }));
}

TEST(OperationQueue, ACompletionBlockMayDropTheQueueAndAddToIt)
{
    auto queue = std::make_unique<LimitedQueue>(1);
    const Callback<> dropped;
    const Callback<> added;
    const auto operation = std::make_shared<Work>();
    operation->setCompletionBlock([&] {
        queue->addOperation(added);
        queue = nullptr;
        dropped();
    });
    queue->addOperation(operation);
    EXPECT_TRUE(dropped.wait());
    EXPECT_TRUE(added.wait());
}

TEST(OperationQueue, ACompletionBlockFindsItsOperation)
{
    for (int i = 0; i < 1000; ++i) {
        const Callback<bool> found;
        std::weak_ptr<Operation> weak;
        {
            const auto operation = std::make_shared<Work>();
            weak = operation;
            operation->setCompletionBlock([found, self = weak] {
                const auto held = self.lock();
                found(held && held->isFinished());
            });
            OperationQueue().addOperation(operation);
        }
        ASSERT_TRUE(found.wait());
        EXPECT_TRUE(std::get<0>(found.arguments()));
        EXPECT_TRUE(waitFor([&] { return weak.expired(); }));
    }
}

TEST(OperationQueue, HostCodeMayReenterFromObserversAndDestructors)
{
    struct Reentering : Operation {
        OperationQueue* queue = nullptr;
        Callback<> destroyed;
        ~Reentering() override
        {
            queue->cancelAllOperations();
            queue->addOperation(destroyed);
        }
    };
    OperationQueue queue;
    Callback<> destroyed;
    const Callback<std::size_t> counted;
    {
        const auto operation = std::make_shared<Reentering>();
        operation->queue = &queue;
        operation->destroyed = destroyed;
        operation->addObserver("isFinished", [&](auto&, auto, auto change) {
            if (change == Operation::Change::did) counted(queue.operationCount());
        });
        queue.addOperation(operation);
    }
    ASSERT_TRUE(counted.wait());
    EXPECT_EQ(std::get<0>(counted.arguments()), 1u);
    EXPECT_TRUE(destroyed.wait());
    queue.waitUntilAllOperationsAreFinished();
}

namespace {

/// The time that a serial queue of so many operations takes. Each waits for the one before it, or
/// for an exchange of its own, of which the last ends first.
auto timeOfSerialQueue(int length, bool isChain)
{
    LimitedQueue queue(1);
    const auto start = std::chrono::steady_clock::now();
    const auto hold = std::make_shared<Exchange>();
    queue.addOperation(hold);
    std::vector<std::shared_ptr<Exchange>> gates {std::make_shared<Exchange>()};
    std::shared_ptr<Operation> previous = gates.back();
    std::vector<int> order;
    for (int i = 0; i < length; ++i) {
        const auto work
            = depending(previous, std::make_shared<Work>([&order, i] { order.push_back(i); }));
        queue.addOperation(work);
        previous = work;
        if (!isChain) previous = gates.emplace_back(std::make_shared<Exchange>());
    }
    for (; !gates.empty(); gates.pop_back())
        gates.back()->end();
    hold->end();
    queue.waitUntilAllOperationsAreFinished();
    EXPECT_EQ(order.size(), std::size_t(length));
    EXPECT_TRUE(std::is_sorted(order.begin(), order.end()));
    return std::chrono::steady_clock::now() - start;
}

} // namespace

TEST(OperationQueue, StartsInOrderOfAddingAmongTheReadyAndInLinearTime)
{
    for (const bool isChain : {true, false}) {
        timeOfSerialQueue(1000, isChain);
        const auto small = timeOfSerialQueue(10'000, isChain);
        EXPECT_LT(timeOfSerialQueue(100'000, isChain), 40 * small) << isChain;
    }
}

TEST(OperationQueue, ThreadsMayAddCancelWaitAndResizeAtOnce)
{
    OperationQueue shared;
    std::atomic<int> completed {0};
    std::atomic<int> disobeyed {0};
    constexpr int rounds = 1000;
    const auto host = [&](int seed) {
        std::shared_ptr<Operation> previous;
        for (int i = 0; i < rounds; ++i) {
            const bool isCancelledFirst = (i + seed) % 5 == 0;
            const auto work = std::make_shared<Work>([&, isCancelledFirst] {
                if (isCancelledFirst) ++disobeyed;
            });
            work->setCompletionBlock([&] { ++completed; });
            if (previous && (i + seed) % 3 != 0) work->addDependency(previous);
            if (isCancelledFirst) work->cancel();
            i % 2 ? OperationQueue().addOperation(work) : shared.addOperation(work);
            if ((i + seed) % 7 == 0) work->cancel();
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
    EXPECT_TRUE(waitFor([&] { return completed == 4 * rounds; }));
    EXPECT_EQ(disobeyed, 0) << "ran though it had been cancelled before";
}

TEST(OperationQueueDeathTest, MisuseAndExceptionsStopTheProcess)
{
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    const auto addTwice = [] {
        LimitedQueue queue(0);
        const auto operation = std::make_shared<Operation>();
        queue.addOperation(operation);
        OperationQueue().addOperation(operation);
    };
    EXPECT_DEATH(addTwice(), "fatal error: an operation is added to a queue");
    const auto addFinished = [] {
        const auto operation = std::make_shared<Operation>();
        operation->start();
        OperationQueue().addOperation(operation);
    };
    EXPECT_DEATH(addFinished(), "fatal error: an operation is added to a queue");
    EXPECT_DEATH(LimitedQueue(-2), "fatal error: a queue");
    const auto throwing = [] {
        OperationQueue queue;
        queue.addOperation([] { throw std::runtime_error("lost"); });
        queue.waitUntilAllOperationsAreFinished();
    };
    EXPECT_DEATH(throwing(), "lost");
}
