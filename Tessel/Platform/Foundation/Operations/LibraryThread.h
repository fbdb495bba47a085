#pragma once

#include "Tessel/Platform/Foundation/Base/Export.h"

#include <functional>
#include <thread>

namespace Tessel {

/// While one lives, its thread works for the library, and who waits on it for what the library is
/// to bring may be waiting for itself: `wait` of a session's call is refused there. The library
/// marks its own threads; a host's own transport may mark the one on which it calls back.
class TESSEL_EXPORT LibraryThread {
public:
    LibraryThread();
    ~LibraryThread();
    LibraryThread(const LibraryThread&) = delete;
    LibraryThread& operator=(const LibraryThread&) = delete;

    /// Starts a thread of the library's own. It takes no signals: the host's handlers belong on the
    /// host's threads, and the TLS library writes to sockets that the server may have closed.
    /// Throws `std::system_error` when no thread can be made.
    static std::thread start(std::function<void()> work);

    /// Whether the calling thread is one: a worker, the transport's or a timer's.
    static bool isCurrent();
};

} // namespace Tessel
