#pragma once

#include <chrono>
#include <csignal>
#include <exception>
#include <functional>
#include <sys/wait.h>
#include <unistd.h>

namespace Tessel::Test {

/// Runs `work` in a child of this process, which has no other threads.
class ChildProcess {
public:
    explicit ChildProcess(const std::function<int()>& work)
        : process_(::fork())
    {
        if (process_ != 0) return;
        try {
            ::_exit(work());
        } catch (const std::exception&) {
            ::_exit(99);
        }
    }
    ~ChildProcess() { killAfter({}); }
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;

    /// What `work` gave; -1 when it was killed.
    int wait()
    {
        int status = 0;
        ::waitpid(process_, &status, 0);
        process_ = 0;
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }

    /// As `wait`, which tells whether it was in time.
    int killAfter(std::chrono::microseconds pause)
    {
        if (process_ <= 0) return 0;
        if (pause.count() > 0) ::usleep(useconds_t(pause.count()));
        ::kill(process_, SIGKILL);
        return wait();
    }

private:
    pid_t process_;
};

} // namespace Tessel::Test
