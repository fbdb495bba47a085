#include "tests/Tessel/Platform/Foundation/Operations/TestOperations.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

using namespace Tessel;
using namespace Tessel::Test;
using namespace std::chrono_literals;

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
    EXPECT_TRUE(waitFor([] {
        const std::lock_guard lock(resultsMutex);
        return !results.empty();
    }));
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

TEST(OperationExitDeathTest, TheProcessExitsCleanlyWithOperationsInFlight)
{
    GTEST_FLAG_SET(death_test_style, "threadsafe");
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
