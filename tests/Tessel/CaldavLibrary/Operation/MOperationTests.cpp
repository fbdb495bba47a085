#include "Tessel/CaldavLibrary/Operation/MOperation.h"
#include "Tessel/Platform/Foundation/Operations/OperationQueue.h"

#include <gtest/gtest.h>

#include <atomic>
#include <string>
#include <thread>
#include <vector>

using namespace Tessel;

namespace {

using Log = std::vector<std::string>;

struct Recorded : MOperation {
    Log log;
    std::atomic<bool> mainReturned {false};

    Recorded()
    {
        for (const auto* key : {"isExecuting", "isFinished"}) {
            addObserver(key, [this](Operation&, std::string_view name, Change change) {
                const std::string when = change == Change::will ? "will " : "did ";
                log.push_back(when + std::string(name) + (is_Executing ? " E" : " -")
                    + (is_Finished ? "F" : "-"));
            });
        }
    }
    void main() override
    {
        log.push_back("main");
        mainReturned = true;
    }
};

} // namespace

TEST(MOperation, ExecutesUntilItsWorkIsDone)
{
    const auto operation = std::make_shared<Recorded>();
    EXPECT_TRUE(operation->isConcurrent());
    EXPECT_FALSE(operation->identifier.has_value());
    operation->start();
    EXPECT_EQ(operation->log, (Log {"will isExecuting --", "did isExecuting E-", "main"}));
    EXPECT_TRUE(operation->isExecuting());
    EXPECT_FALSE(operation->done());

    operation->log.clear();
    operation->cancel();
    EXPECT_TRUE(operation->isExecuting()) << "cancelling after the start changes something";
    operation->setDone(true);
    EXPECT_EQ(operation->log,
        (Log {"will isFinished E-", "will isExecuting E-", "did isExecuting -F",
            "did isFinished -F"}));
    EXPECT_TRUE(operation->done() && operation->isFinished() && !operation->isExecuting());
}

TEST(MOperation, CancelledBeforeItsStartOnlyFinishes)
{
    const auto operation = std::make_shared<Recorded>();
    operation->cancel();
    operation->start();
    EXPECT_EQ(operation->log, (Log {"will isFinished --", "did isFinished -F"}));
    EXPECT_FALSE(operation->done());
}

TEST(MOperation, EveryAssignmentOfDoneIsAnnouncedAndTheQueueHeedsTheFirst)
{
    OperationQueue queue;
    queue.setMaxConcurrentOperationCount(1);
    const auto twice = std::make_shared<Recorded>();
    std::atomic<int> completions {0};
    twice->setCompletionBlock([&] { ++completions; });
    queue.addOperation(twice);
    const auto still = std::make_shared<Recorded>();
    queue.addOperation(still);
    while (!twice->mainReturned)
        std::this_thread::yield();
    twice->setDone(true);
    twice->setDone(true);
    twice->setDone(false);
    twice->setDone(true);
    while (!still->mainReturned)
        std::this_thread::yield();
    EXPECT_EQ(queue.operationCount(), 1u);
    EXPECT_EQ(twice->log.size(), 3u + 4 * 4);
    still->setDone(true);
    queue.waitUntilAllOperationsAreFinished();
    while (completions == 0)
        std::this_thread::yield();
    EXPECT_EQ(completions, 1);
}

TEST(MOperation, MayBeDoneInsideMainOrOnAnotherThread)
{
    struct Inside : MOperation {
        void main() override { setDone(true); }
    };
    struct Outside : MOperation {
        void main() override
        {
            std::thread([self = shared_from_this(), this] { setDone(true); }).detach();
        }
    };
    for (int i = 0; i < 200; ++i) {
        OperationQueue queue;
        const auto outside = std::make_shared<Outside>();
        const auto inside = std::make_shared<Inside>();
        inside->addDependency(outside);
        queue.addOperation(inside);
        queue.addOperation(outside);
        inside->waitUntilFinished();
        EXPECT_EQ(queue.operationCount(), 0u);
    }
}
