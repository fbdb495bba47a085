#pragma once

#include <atomic>
#include <cstddef>
#include <string>
#include <utility>

namespace Tessel {

/// The text of one parse and the memory of the nodes that refer to it. Every node counts as an
/// owner: all of it is freed together with the last node, on whatever thread that is.
class ParseArena {
public:
    explicit ParseArena(std::string bytes);
    ParseArena(const ParseArena&) = delete;
    ParseArena& operator=(const ParseArena&) = delete;
    ~ParseArena();

    void retain() { owners_.fetch_add(1, std::memory_order_relaxed); }
    void release()
    {
        if (owners_.fetch_sub(1, std::memory_order_acq_rel) == 1) delete this;
    }

    /// Memory that lives as long as the arena. Not for two threads at once.
    void* allocate(std::size_t size, std::size_t alignment)
    {
        const auto padding = (alignment - std::size_t(next_) % alignment) % alignment;
        if (std::size_t(end_ - next_) < padding + size) return allocateInNewChunk(size);
        auto* const memory = next_ + padding;
        next_ = memory + size;
        return memory;
    }

    std::string text;

private:
    struct Chunk {
        Chunk* previous;
    };

    void* allocateInNewChunk(std::size_t size);

    std::atomic<std::size_t> owners_ {1};
    char* next_ = nullptr;
    char* end_ = nullptr;
    Chunk* lastChunk_ = nullptr;
    std::size_t chunkSize_;
};

/// Gives `std::allocate_shared` memory of an arena and keeps the arena until the object is gone.
template <typename T> struct ParseAllocator {
    using value_type = T;

    explicit ParseAllocator(ParseArena& arena)
        : arena(&arena)
    {
    }
    template <typename U>
    ParseAllocator(const ParseAllocator<U>& other)
        : arena(other.arena)
    {
    }

    T* allocate(std::size_t count)
    {
        auto* const memory = static_cast<T*>(arena->allocate(count * sizeof(T), alignof(T)));
        arena->retain();
        return memory;
    }
    void deallocate(T*, std::size_t) { arena->release(); }

    template <typename U> bool operator==(const ParseAllocator<U>& other) const
    {
        return arena == other.arena;
    }

    ParseArena* arena;
};

} // namespace Tessel
