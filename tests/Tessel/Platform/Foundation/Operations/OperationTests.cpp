#include "Tessel/Platform/Foundation/Operations/Operation.h"
#include "tests/support/Callback.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <thread>
#include <utility>
#include <vector>

using namespace Tessel;

namespace {

struct Recorder : Operation {
    std::vector<std::string> log;
    void main() override { log.push_back("main"); }

    void record(std::string_view key)
    {
        addObserver(key, [](Operation& operation, std::string_view name, Change change) {
            auto& self = static_cast<Recorder&>(operation);
            const auto value = name == "isFinished" ? self.isFinished()
                : name == "isCancelled"             ? self.isCancelled()
                                                    : self.isExecuting();
            self.log.push_back((change == Change::will ? "will " : "did ") + std::string(name)
                + (value ? " 1" : " 0"));
        });
    }
};

using Log = std::vector<std::string>;

} // namespace

TEST(Operation, AnnouncesEachChangeAroundIt)
{
    const auto operation = std::make_shared<Recorder>();
    operation->record("isExecuting");
    operation->record("isFinished");
    operation->start();
    EXPECT_EQ(operation->log,
        (Log {"will isExecuting 0", "did isExecuting 1", "main", "will isExecuting 1",
            "did isExecuting 0", "will isFinished 0", "did isFinished 1"}));
    operation->start();
    EXPECT_EQ(operation->log.size(), 7u) << "a finished operation ran again";
}

TEST(Operation, CancelledBeforeItsStartFinishesWithoutMain)
{
    const auto operation = std::make_shared<Recorder>();
    operation->record("isCancelled");
    operation->record("isFinished");
    operation->cancel();
    operation->cancel();
    EXPECT_TRUE(operation->isReady());
    operation->start();
    operation->cancel();
    EXPECT_EQ(operation->log,
        (Log {"will isCancelled 0", "did isCancelled 1", "will isFinished 0", "did isFinished 1"}));
}

TEST(Operation, AnObserverMayRemoveItself)
{
    const auto operation = std::make_shared<Operation>();
    Operation::ObserverToken token = 0;
    int calls = 0;
    token = operation->addObserver("isFinished", [&](Operation& self, auto, auto) {
        ++calls;
        self.removeObserver(token);
    });
    operation->start();
    EXPECT_EQ(calls, 1);
}

TEST(Operation, IsReadyWhenItsLastDependencyHasFinishedOrIsRemoved)
{
    const auto first = std::make_shared<Operation>();
    const auto second = std::make_shared<Operation>();
    const auto waiting = std::make_shared<Operation>();
    waiting->addDependency(first);
    waiting->addDependency(second);
    waiting->addDependency(second);
    EXPECT_EQ(waiting->dependencies(), (std::vector {first, second, second}));

    first->start();
    EXPECT_FALSE(waiting->isReady());
    waiting->removeDependency(second);
    EXPECT_TRUE(waiting->isReady());
    EXPECT_EQ(waiting->dependencies(), std::vector {first});
    second->start();
    EXPECT_TRUE(waiting->isReady());

    waiting->addDependency(first);
    EXPECT_TRUE(waiting->isReady()) << "waits for what has finished already";
}

TEST(Operation, OutlivesNeitherItsDependentsNorItsDependencies)
{
    const auto dependency = std::make_shared<Operation>();
    auto dependent = std::make_shared<Operation>();
    dependent->addDependency(dependency);
    const std::weak_ptr weak = dependent;
    dependent = nullptr;
    EXPECT_TRUE(weak.expired());
    dependency->start();

    auto released = std::make_shared<Operation>();
    const std::weak_ptr weakDependency = released;
    const auto finished = std::make_shared<Operation>();
    finished->addDependency(std::exchange(released, nullptr));
    finished->start();
    EXPECT_TRUE(weakDependency.expired()) << "a finished operation keeps what it waited for";
}

TEST(Operation, AChainHeldByItsLastLinkIsFreedWithoutRecursion)
{
    auto last = std::make_shared<Operation>();
    const std::weak_ptr first = last;
    for (int i = 0; i < 1'000'000; ++i) {
        auto next = std::make_shared<Operation>();
        next->addDependency(std::exchange(last, next));
    }
    last = nullptr;
    EXPECT_TRUE(first.expired());
}

TEST(Operation, StartedByHandStillRunsItsCompletionBlockOnAnotherThread)
{
    const Tessel::Test::Callback<std::thread::id> ran;
    const auto operation = std::make_shared<Operation>();
    operation->setCompletionBlock([=] { ran(std::this_thread::get_id()); });
    operation->start();
    ASSERT_TRUE(ran.wait());
    EXPECT_NE(std::get<0>(ran.arguments()), std::this_thread::get_id());
}
