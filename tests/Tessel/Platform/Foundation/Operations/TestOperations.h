#pragma once

#include "Tessel/Platform/Foundation/Operations/OperationQueue.h"
#include "tests/support/Callback.h"

#include <atomic>
#include <functional>
#include <memory>

namespace Tessel::Test {

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

} // namespace Tessel::Test
