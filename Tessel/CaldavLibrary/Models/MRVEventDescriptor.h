#pragma once

#include <string>

namespace Tessel {

/// One event resource in a collection's listing.
struct MRVEventDescriptor {
    const std::string eTag; ///< as the server wrote it, quotes included
    const std::string href; ///< as the server wrote it, percent-encoding kept
};

} // namespace Tessel
