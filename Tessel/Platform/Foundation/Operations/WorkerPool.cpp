#include "Tessel/Platform/Foundation/Operations/WorkerPool.h"

#include "Tessel/Platform/Foundation/Base/FatalError.h"
#include "Tessel/Platform/Foundation/Operations/LibraryThread.h"

#include <algorithm>
#include <chrono>
#include <system_error>
#include <thread>

namespace Tessel {

struct WorkerPool::Worker {
    std::condition_variable wake;
    bool isIdle = false;
};

namespace {

/// A job that takes longer, perhaps because it waits for the thread that waits here, is left alone.
constexpr std::chrono::milliseconds patience {500};

thread_local bool isWorker = false;

std::size_t maximumThreads()
{
    static const std::size_t count = std::clamp(std::thread::hardware_concurrency(), 2u, 4u);
    return count;
}

void run(const WorkerPool::Job& job)
{
    if (const auto* block = std::get_if<std::function<void()>>(&job)) {
        (*block)();
    } else {
        std::get<std::shared_ptr<Runnable>>(job)->run();
    }
}

} // namespace

WorkerPool& WorkerPool::shared()
{
    static auto& pool = *new WorkerPool;
    return pool;
}

void WorkerPool::submit(Job job)
{
    const std::lock_guard lock(mutex_);
    arriving_.push_back(std::move(job));
    wakeWorker();
}

void WorkerPool::close()
{
    const std::lock_guard lock(mutex_);
    closed_ = true;
}

bool WorkerPool::isClosed() const
{
    const std::lock_guard lock(mutex_);
    return closed_;
}

bool WorkerPool::hasJob() const
{
    return next_ < leaving_.size() || !arriving_.empty();
}

WorkerPool::Job WorkerPool::takeJob()
{
    if (next_ == leaving_.size()) {
        leaving_.clear();
        leaving_.swap(arriving_);
        next_ = 0;
    }
    return std::move(leaving_[next_++]);
}

/// One worker at a time is on its way; it wakes the next one when it leaves work behind.
void WorkerPool::wakeWorker()
{
    if (closed_ || waking_) return;
    if (!idle_.empty()) {
        waking_ = true;
        auto& worker = *idle_.back();
        idle_.pop_back();
        worker.isIdle = false;
        worker.wake.notify_one();
    } else if (threads_ < maximumThreads()) {
        addThread();
    }
}

void WorkerPool::addThread()
{
    try {
        LibraryThread::start([this] { work(); }).detach();
        ++threads_;
        waking_ = true;
    } catch (const std::system_error&) {
        if (threads_ == 0) fatalError("no worker thread can be made");
    }
}

void WorkerPool::work() noexcept
{
    isWorker = true;
    Worker self;
    std::unique_lock lock(mutex_);
    waking_ = false;
    for (;;) {
        while (!hasJob() || closed_) {
            self.isIdle = true;
            idle_.push_back(&self);
            self.wake.wait(lock, [&self] { return !self.isIdle; });
            waking_ = false;
        }
        {
            const auto job = takeJob();
            if (hasJob()) wakeWorker();
            ++running_;
            lock.unlock();
            run(job);
        }
        lock.lock();
        --running_;
        if (closed_) quiet_.notify_all();
    }
}

void WorkerPool::waitUntilQuiet()
{
    const std::size_t own = isWorker ? 1 : 0;
    std::unique_lock lock(mutex_);
    quiet_.wait_for(lock, patience, [&] { return running_ <= own; });
}

} // namespace Tessel
