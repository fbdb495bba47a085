#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>

namespace Tessel {

/// An immutable run of bytes. Copies share the bytes, so an answer of many megabytes is handed
/// from the transport to a parser without being copied.
class Data {
public:
    Data() = default;
    /// Takes the bytes over.
    Data(std::string bytes)
        : bytes_(std::make_shared<const std::string>(std::move(bytes)))
    {
    }

    std::size_t size() const { return bytes_ ? bytes_->size() : 0; } ///< in bytes
    bool isEmpty() const { return size() == 0; } ///< also when it was never given any

    /// The bytes; valid as long as any copy of this object lives.
    std::string_view view() const
    {
        return bytes_ ? std::string_view(*bytes_) : std::string_view();
    }

    /// The byte count as text, such as "20 bytes".
    std::string description() const { return std::to_string(size()) + " bytes"; }

    friend bool operator==(const Data& a, const Data& b) { return a.view() == b.view(); }

private:
    std::shared_ptr<const std::string> bytes_;
};

} // namespace Tessel
