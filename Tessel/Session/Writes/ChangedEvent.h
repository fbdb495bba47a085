#pragma once

#include "Tessel/Session/Store/Resource.h"

#include <optional>

namespace Tessel {

/// What a change has written.
struct ChangedEvent {
    Resource resource; ///< as it is on the server
    /// The instance and all that follow, where the edit divided the series.
    std::optional<Resource> following = {};
};

} // namespace Tessel
