#include "Tessel/icalendar/ParseArena.h"

#include <algorithm>
#include <new>

namespace Tessel {

static constexpr std::size_t smallestChunk = 1024;
static constexpr std::size_t largestChunk = 64 * 1024;

ParseArena::ParseArena(std::string bytes)
    : text(std::move(bytes))
    , chunkSize_(std::clamp(text.size() / 2, smallestChunk, largestChunk))
{
}

ParseArena::~ParseArena()
{
    while (lastChunk_)
        operator delete(std::exchange(lastChunk_, lastChunk_->previous));
}

void* ParseArena::allocateInNewChunk(std::size_t size)
{
    constexpr auto header = std::max(sizeof(Chunk), alignof(std::max_align_t));
    const auto chunkSize = std::max(chunkSize_, header + size);
    auto* const memory = static_cast<char*>(operator new(chunkSize));
    lastChunk_ = new (memory) Chunk {lastChunk_};
    next_ = memory + header + size;
    end_ = memory + chunkSize;
    return memory + header;
}

} // namespace Tessel
