#pragma once

#include <mutex>

namespace Tessel {

/// Locks a mutex that is only ever held for some hundred instructions: trying again for as long
/// is far cheaper than sleeping and being woken.
inline std::unique_lock<std::mutex> shortLock(std::mutex& mutex)
{
    constexpr int attempts = 200;
    for (int i = 0; i < attempts; ++i) {
        if (mutex.try_lock()) return {mutex, std::adopt_lock};
#if defined(__x86_64__) || defined(__i386__)
        __builtin_ia32_pause();
#endif
    }
    return std::unique_lock(mutex);
}

} // namespace Tessel
