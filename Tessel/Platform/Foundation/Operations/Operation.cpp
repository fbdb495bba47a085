#include "Tessel/Platform/Foundation/Operations/Operation.h"

#include "Tessel/Platform/Foundation/Base/FatalError.h"
#include "Tessel/Platform/Foundation/Operations/KeyValueObservers.h"
#include "Tessel/Platform/Foundation/Operations/Scheduler.h"

#include <atomic>
#include <iterator>
#include <utility>

namespace Tessel {

namespace {

using Operations = std::vector<std::shared_ptr<OperationState>>;

thread_local Operations* dying = nullptr;

/// Lets operations go one after another: a chain of dependencies that only its last link holds
/// would otherwise destroy itself as deep as it is long.
void letGo(Operations operations)
{
    if (dying) {
        std::move(operations.begin(), operations.end(), std::back_inserter(*dying));
        return;
    }
    dying = &operations;
    while (!operations.empty()) {
        const auto next = std::move(operations.back());
        operations.pop_back();
    }
    dying = nullptr;
}

} // namespace

struct Operation::State final : OperationState {
    using OperationState::OperationState;

    KeyValueObservers<Operation> observers;
    std::atomic<bool> executing {false};
    std::atomic<bool> finished {false};

    void run() override
    {
        if (!operation.isFinished()) operation.start();
    }
};

Operation::Operation()
    : state_(std::make_unique<State>(*this))
{
}

std::shared_ptr<OperationState> Operation::shared(const std::shared_ptr<Operation>& operation)
{
    return {operation, operation->state_.get()};
}

Operation::~Operation()
{
    if (state_->ties) letGo(std::move(state_->ties->dependencies));
}

void Operation::start()
{
    if (isFinished()) return;
    const auto setExecuting = [this](bool executing) {
        willChangeValue("isExecuting");
        state_->executing = executing;
        didChangeValue("isExecuting");
    };
    const bool runs = !isCancelled();
    if (runs) {
        setExecuting(true);
        main();
        setExecuting(false);
    }
    willChangeValue("isFinished");
    state_->finished = true;
    didChangeValue("isFinished");
}

void Operation::main() { }

bool Operation::isConcurrent() const
{
    return false;
}

bool Operation::isExecuting() const
{
    return state_->executing;
}

bool Operation::isFinished() const
{
    return state_->finished;
}

void Operation::cancel()
{
    if (isCancelled() || isFinished()) return;
    willChangeValue("isCancelled");
    state_->cancelled = true;
    didChangeValue("isCancelled");
    Scheduler::shared().cancelled(*state_);
}

bool Operation::isCancelled() const
{
    return state_->cancelled;
}

bool Operation::isReady() const
{
    return Scheduler::shared().isReady(*state_);
}

void Operation::addDependency(std::shared_ptr<Operation> operation)
{
    if (!operation) fatalError("a dependency is no operation");
    const auto self = weak_from_this().lock();
    if (!self) fatalError("an operation depends on another before it is shared");
    Scheduler::shared().addDependency(shared(self), shared(operation));
}

void Operation::removeDependency(const std::shared_ptr<Operation>& operation)
{
    const auto self = weak_from_this().lock();
    if (self && operation) Scheduler::shared().removeDependency(shared(self), shared(operation));
}

std::vector<std::shared_ptr<Operation>> Operation::dependencies() const
{
    std::vector<std::shared_ptr<Operation>> operations;
    for (auto& state : Scheduler::shared().dependencies(*state_))
        operations.emplace_back(std::move(state), &state->operation);
    return operations;
}

void Operation::setCompletionBlock(std::function<void()> block)
{
    Scheduler::shared().setCompletionBlock(*state_, std::move(block));
}

void Operation::waitUntilFinished() const
{
    Scheduler::shared().waitUntilFinished(*state_);
}

Operation::ObserverToken Operation::addObserver(std::string_view key, Observer observer)
{
    return state_->observers.add(key, std::move(observer));
}

void Operation::removeObserver(ObserverToken token)
{
    state_->observers.remove(token);
}

void Operation::willChangeValue(std::string_view key)
{
    state_->observers.notify(*this, key, Change::will);
}

void Operation::didChangeValue(std::string_view key)
{
    if (key != "isFinished") return state_->observers.notify(*this, key, Change::did);
    // The last owner may let go as soon as the operation counts as finished.
    auto self = weak_from_this().lock();
    state_->observers.notify(*this, key, Change::did);
    if (isFinished()) Scheduler::shared().finished(*state_, std::move(self));
}

} // namespace Tessel
