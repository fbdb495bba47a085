#pragma once

#include <condition_variable>
#include <cstddef>
#include <functional>
#include <memory>
#include <mutex>
#include <variant>
#include <vector>

namespace Tessel {

/// Something that a worker runs and holds until it has run.
class Runnable {
public:
    virtual void run() = 0;

protected:
    ~Runnable() = default;
};

/// The few threads on which operations start and completion blocks run. Threads are made on
/// demand, wait for work for ever after, and do not keep the process alive. An exception that
/// leaves a job ends the process: nobody could be told of it.
///
/// The pool is never destroyed, since a job may submit another one while the process exits.
class WorkerPool {
public:
    using Job = std::variant<std::shared_ptr<Runnable>, std::function<void()>>;

    static WorkerPool& shared();

    /// Jobs start in the order in which they are submitted.
    void submit(Job job);

    /// From now on no job starts any more.
    void close();
    bool isClosed() const;

    /// Waits a moment for the jobs that run.
    void waitUntilQuiet();

private:
    struct Worker;

    WorkerPool() = default;

    bool hasJob() const;
    Job takeJob();
    void wakeWorker();
    void addThread();
    void work() noexcept;

    mutable std::mutex mutex_;
    std::condition_variable quiet_;
    // Two buffers that swap: a deque would allocate and free its blocks on different threads.
    std::vector<Job> arriving_;
    std::vector<Job> leaving_;
    std::size_t next_ = 0; ///< of `leaving_`
    std::size_t threads_ = 0;
    std::vector<Worker*> idle_; ///< the last to fall idle, whose caches are warm, is woken first
    std::size_t running_ = 0;
    bool waking_ = false;
    bool closed_ = false;
};

} // namespace Tessel
