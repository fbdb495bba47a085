#pragma once

#include "Tessel/Session/Store/PendingChange.h"
#include "Tessel/Session/Store/Resource.h"
#include "Tessel/Session/Store/StoredCalendar.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace Tessel {

/// A resource that could not be brought, to be asked for again.
struct FailedResource {
    std::string href; ///< of the resource
    std::string reason; ///< for a person

    friend bool operator==(const FailedResource&, const FailedResource&) = default;
};

/// A change of the outbox that is done with.
struct SettledChange {
    std::string id; ///< as `PendingChange::id`
    std::int64_t revision; ///< as `PendingChange::revision`
};

/// Changes of one calendar and of the outbox that a store holds together or not at all. Of the
/// resources, the removed ones go first, then come `upserts`, then `failed`.
struct Batch {
    std::string calendar = {}; ///< its href; only a batch of the outbox alone has none
    std::vector<Resource> upserts = {}; ///< new, or in place of what is held
    std::vector<std::string> removed = {}; ///< hrefs; one that is not held is no error
    /// What is held of these stays as it is; an upsert or a removal of one ends its failure.
    std::vector<FailedResource> failed = {};
    /// What the changes were made on: the tags that these resources are held with before any batch
    /// is applied, an empty one where none is held. Where it is otherwise, somebody else has
    /// brought them meanwhile and the batch is refused.
    std::vector<HeldTag> expected = {};
    /// The mark that the changes are counted from. Where another one is held, somebody else has
    /// synced meanwhile and the batch is refused.
    std::optional<SyncMark> basedOn = {};
    /// Holds from here on: all that it announces is in this batch, in those before it, or `failed`.
    std::optional<SyncMark> mark = {};

    std::vector<PendingChange> pending = {}; ///< new ones, which are last in order; others in place
    std::vector<SettledChange> settled = {}; ///< changes of the outbox that go
};

} // namespace Tessel
