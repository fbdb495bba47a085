#pragma once

#include <string>

namespace Tessel {

/// One calendar object (RFC 4791, 4.1) whole: an event, or a series with all its changed instances.
struct Resource {
    std::string href; ///< as the server writes it
    std::string tag; ///< its ETag, quotes and all
    std::string text; ///< iCalendar, byte for byte as it came

    friend bool operator==(const Resource&, const Resource&) = default;
};

} // namespace Tessel
