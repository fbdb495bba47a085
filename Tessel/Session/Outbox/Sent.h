#pragma once

#include "Tessel/Session/Store/PendingChange.h"
#include "Tessel/Session/Store/Resource.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace Tessel {

/// A change of the outbox that the server has made.
struct SentChange {
    std::string id; ///< as `PendingChange::id`
    ChangeKind kind = ChangeKind::edit; ///< what was done
    Resource resource = {}; ///< as it is on the server; of one that was removed only its href
};

/// What sending the outbox has come to.
struct Sent {
    std::vector<SentChange> done = {}; ///< in the order in which they were made
    /// Ids of those that this sending parked: they wait for the host's decision. Ones that were
    /// parked before are in `Outbox::pending` only.
    std::vector<std::string> parked = {};
    std::size_t waiting = 0; ///< others that are left
    /// When to send again, in milliseconds since 1970, where something waits for a time.
    std::optional<std::int64_t> nextTry = {};
    /// Why nothing more was tried: the server cannot be reached, or takes the user for nobody.
    std::optional<Failure> stopped = {};
};

/// How far sending is.
struct SendProgress {
    std::size_t done = 0; ///< changes that were made or tried
    std::size_t total = 0; ///< all that were there when it began
};
using SendReport = std::function<void(const SendProgress&)>; ///< as `ProgressReport`

} // namespace Tessel
