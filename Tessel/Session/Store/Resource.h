#pragma once

#include <string>

namespace Tessel {

/// One calendar object (RFC 4791, 4.1) whole: an event, or a series with all its changed instances.
struct Resource {
    std::string href; ///< as the server writes it
    /// Its ETag, quotes and all. Empty where the server has given none, and for what waits in an
    /// `Outbox`.
    std::string tag;
    std::string text; ///< iCalendar, byte for byte as it came

    friend bool operator==(const Resource&, const Resource&) = default;
};

/// A held resource without its text.
struct HeldTag {
    std::string href; ///< of the resource
    std::string tag; ///< its ETag, as sent

    friend bool operator==(const HeldTag&, const HeldTag&) = default;
};

} // namespace Tessel
