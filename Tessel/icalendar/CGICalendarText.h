#pragma once

#include "Tessel/Platform/Foundation/Base/Export.h"

#include <cstddef>
#include <optional>
#include <string_view>

namespace Tessel {

/// The raw text of a node in two words: absent, a copy of its own, or (made by the parser only) a
/// reference into the text that was parsed, which every parsed node keeps alive.
class TESSEL_EXPORT CGICalendarText {
public:
    CGICalendarText() = default;
    CGICalendarText(const CGICalendarText&) = delete;
    CGICalendarText& operator=(const CGICalendarText&) = delete;
    ~CGICalendarText() { release(); }

    /// The text; valid until it is next assigned or referred.
    std::optional<std::string_view> view() const
    {
        if (!data_) return std::nullopt;
        return std::string_view(data_, size_);
    }
    /// The text, empty when it is absent.
    std::string_view viewOrEmpty() const { return {data_, size_}; }

    /// Takes a copy; `text` may lie within the present text.
    void assign(std::optional<std::string_view> text);

    /// Refers to bytes that outlive this object.
    void refer(std::string_view text)
    {
        release();
        data_ = text.data() ? text.data() : "";
        size_ = text.size();
        owned_ = false;
    }

private:
    void release()
    {
        if (owned_) delete[] data_;
    }

    static constexpr int sizeBits = sizeof(std::size_t) * 8 - 1;

    const char* data_ = nullptr;
    std::size_t size_ : sizeBits = 0;
    std::size_t owned_ : 1 = false;
};

} // namespace Tessel
