#include "benchmarks/HeapUse.h"

#include <atomic>
#include <cerrno>
#include <malloc.h>

extern "C" {
// The C library's own, under the names that it keeps for those who count.
void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* memory, std::size_t size);
void* __libc_memalign(std::size_t alignment, std::size_t size);
void __libc_free(void* memory);
}

namespace Tessel::Benchmarks {

namespace {

std::atomic<std::size_t> held {0};
std::atomic<std::size_t> peak {0};

void* counted(void* memory)
{
    const auto now = held += malloc_usable_size(memory);
    for (auto most = peak.load(); now > most && !peak.compare_exchange_weak(most, now);) { }
    return memory;
}

void uncount(void* memory)
{
    held -= malloc_usable_size(memory);
}

} // namespace

std::size_t heldBytes()
{
    return held;
}

std::size_t peakHeldBytes()
{
    return peak;
}

void resetHeldPeak()
{
    peak = held.load();
}

} // namespace Tessel::Benchmarks

using Tessel::Benchmarks::counted;
using Tessel::Benchmarks::uncount;

extern "C" {

void* malloc(std::size_t size)
{
    return counted(__libc_malloc(size));
}

void* calloc(std::size_t count, std::size_t size)
{
    return counted(__libc_calloc(count, size));
}

void* realloc(void* memory, std::size_t size)
{
    uncount(memory);
    auto* const moved = __libc_realloc(memory, size);
    if (!moved && size > 0) counted(memory);
    return counted(moved);
}

void* memalign(std::size_t alignment, std::size_t size)
{
    return counted(__libc_memalign(alignment, size));
}

void* aligned_alloc(std::size_t alignment, std::size_t size)
{
    return memalign(alignment, size);
}

int posix_memalign(void** memory, std::size_t alignment, std::size_t size)
{
    *memory = memalign(alignment, size);
    return *memory ? 0 : ENOMEM;
}

void free(void* memory)
{
    uncount(memory);
    __libc_free(memory);
}
}
