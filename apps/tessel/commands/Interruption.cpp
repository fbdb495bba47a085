#include "apps/tessel/commands/Interruption.h"

#include "apps/tessel/accounts/PasswordPrompt.h"
#include "apps/tessel/output/ExitStatus.h"

#include <signal.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <mutex>
#include <thread>

namespace Tessel::App {

namespace {

// Never destroyed: the thread that waits for signals runs until the process is gone.
std::mutex& mutex = *new std::mutex;
std::function<void()>& cancel = *new std::function<void()>;
std::atomic<int> received {0};

void wait(sigset_t signals)
{
    int number = 0;
    if (sigwait(&signals, &number) != 0) return;
    received = number;
    std::function<void()> cancelCall;
    {
        const std::lock_guard lock(mutex);
        cancelCall = cancel;
    }
    constexpr auto grace = std::chrono::milliseconds(800);
    if (cancelCall) {
        cancelCall();
        std::this_thread::sleep_for(grace);
    }
    endPrompt();
    ::_exit(interrupted + number);
}

} // namespace

void Interruption::start()
{
    sigset_t signals {};
    sigemptyset(&signals);
    for (const int number : {SIGINT, SIGTERM, SIGHUP}) {
        struct sigaction action { };
        // One that whoever started the process has it ignore stays ignored.
        const bool isIgnored
            = sigaction(number, nullptr, &action) == 0 && action.sa_handler == SIG_IGN;
        if (!isIgnored) sigaddset(&signals, number);
    }
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);
    std::thread(wait, signals).detach();
}

int Interruption::signal()
{
    return received;
}

void Interruption::setCancel(std::function<void()> call)
{
    {
        const std::lock_guard lock(mutex);
        cancel = call;
    }
    // Whoever looked before it was set has nothing to cancel.
    if (received && call) call();
}

} // namespace Tessel::App
