#pragma once

#include "Tessel/Platform/Foundation/Web/HTTPHeaders.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace Tessel {

/// Gathers one answer from the lines and bytes in which it arrives. Only the last of several heads
/// is kept (after those of 1xx answers); trailers are ignored.
class AnswerCollector {
public:
    explicit AnswerCollector(std::uint64_t maximumSize)
        : maximumSize_(maximumSize)
    {
    }

    /// False when the answer is larger than allowed.
    bool takeHeaderLine(std::string_view line);
    /// `expectedSize` is what the server says of the whole body, negative when it says nothing;
    /// `arrivedSize` is what has come of it so far, before decompression.
    bool takeBody(std::string_view bytes, std::int64_t expectedSize, std::int64_t arrivedSize);

    /// Whether the last head has come to its end.
    bool hasWholeHead() const { return headerLines_ > 0 && !inHead_; }
    bool isTooLarge() const { return tooLarge_; }
    HTTPHeaders headers;
    std::string body;

private:
    bool refuse();

    std::uint64_t maximumSize_;
    std::uint64_t headerSize_ = 0;
    int headerLines_ = 0;
    std::string lastName_;
    bool inHead_ = false;
    bool tooLarge_ = false;
};

} // namespace Tessel
