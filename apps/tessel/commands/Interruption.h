#pragma once

#include <Tessel/TesselSession.h>

#include <functional>

namespace Tessel::App {

/// SIGINT, SIGTERM and SIGHUP: the call that is waited for is cancelled, and the process ends with
/// 128 and the signal's number, at most a second later.
class Interruption {
public:
    Interruption() = delete;

    /// Before there are other threads.
    static void start();
    /// The number of the signal that came; 0 without one.
    static int signal();

    /// As `wait`, until somebody interrupts.
    template <class T> static Result<T> await(const Call<T>& call)
    {
        setCancel([call] { call.cancel(); });
        auto result = wait(call);
        setCancel({});
        return result;
    }

private:
    static void setCancel(std::function<void()> cancel);
};

} // namespace Tessel::App
