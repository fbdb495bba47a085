#pragma once

#include "Tessel/Platform/Foundation/Base/Export.h"

namespace Tessel {

/// While one lives, its thread works for the library, and who waits on it for what the library is to
/// bring may be waiting for itself: `wait` of a session's call is refused there. The library marks
/// its own threads; a host's own transport may mark the one on which it calls back.
class TESSEL_EXPORT LibraryThread {
public:
    LibraryThread();
    ~LibraryThread();
    LibraryThread(const LibraryThread&) = delete;
    LibraryThread& operator=(const LibraryThread&) = delete;

    /// Whether the calling thread is one: a worker, the transport's or a timer's.
    static bool isCurrent();
};

} // namespace Tessel
