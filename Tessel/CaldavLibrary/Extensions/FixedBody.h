#pragma once

#include <cstddef>
#include <string>

namespace Tessel {

/// A request body that is always the same, written over several lines: the line breaks, and the
/// blanks that begin a line, are no part of it.
template <std::size_t size> class FixedBody {
public:
    constexpr explicit FixedBody(const char (&lines)[size])
    {
        bool begins = true;
        for (const char c : lines) {
            if (c == '\n') begins = true;
            if (c == '\n' || c == '\0' || (begins && c == ' ')) continue;
            text_[length_++] = c;
            begins = false;
        }
    }

    std::string text() const { return std::string(text_, length_); }

private:
    char text_[size] {};
    std::size_t length_ = 0;
};

} // namespace Tessel
