#include "Tessel/Platform/Foundation/Operations/LibraryThread.h"

#include <csignal>
#include <utility>

namespace Tessel {

namespace {

thread_local int depth = 0;

/// While one lives, its thread takes no signals, and neither will those that it starts.
class SignalsBlocked {
public:
    SignalsBlocked()
    {
        sigset_t all;
        sigfillset(&all);
        pthread_sigmask(SIG_SETMASK, &all, &before_);
    }
    ~SignalsBlocked() { pthread_sigmask(SIG_SETMASK, &before_, nullptr); }

private:
    sigset_t before_ {};
};

} // namespace

LibraryThread::LibraryThread()
{
    ++depth;
}

LibraryThread::~LibraryThread()
{
    --depth;
}

std::thread LibraryThread::start(std::function<void()> work)
{
    const SignalsBlocked whileItStarts;
    return std::thread([work = std::move(work)] {
        const LibraryThread here;
        work();
    });
}

bool LibraryThread::isCurrent()
{
    return depth > 0;
}

} // namespace Tessel
