#pragma once

#include "Tessel/Platform/Foundation/Base/Export.h"
#include "Tessel/Session/Outcome/Result.h"
#include "Tessel/Session/Store/Batch.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace Tessel {

/// What a host holds of one account: calendars with their resources, and the outbox.
/// `MemoryStore` and `SQLiteStore` are ready to use; a host may bring its own.
///
/// A session calls from its own threads, several at once: every function may be called from any
/// thread, returns when its work is done, and throws nothing. A failure has the kind `storage`
/// unless it says otherwise, and leaves all that is held as it was.
class TESSEL_EXPORT Store {
public:
    /// Takes one resource; false ends the visit. It is called on the thread of the visit while no
    /// lock is held, so it may call the store. A resource that changes during the visit is given as
    /// it was or as it is; one that goes may be left out.
    using Visitor = std::function<bool(const Resource&)>;

    virtual ~Store() = default;

    /// In the order in which they came.
    virtual Result<std::vector<StoredCalendar>> calendars() = 0;
    /// A new calendar, with no mark; or other properties of one that is held, whose mark and
    /// resources stay.
    virtual Outcome put(const StoredCalendar& calendar) = 0;
    /// Removes a calendar with its resources, failures and mark. Changes of the outbox stay. One
    /// that is not held is no error.
    virtual Outcome removeCalendar(const std::string& href) = 0;

    // What a calendar holds; nothing for one that is not held.

    /// Ordered by href, byte by byte.
    virtual Result<std::vector<HeldTag>> tags(const std::string& calendar) = 0;
    /// One resource; none where it is not held.
    virtual Result<std::optional<Resource>> resource(
        const std::string& calendar, const std::string& href)
        = 0;
    /// All resources, ordered by href.
    virtual Outcome visit(const std::string& calendar, const Visitor& visitor) = 0;
    /// Only the resources that may have an instance within [`from`, `to`), in milliseconds since
    /// 1970: all that do, and few others. `instances` says on which days.
    virtual Outcome visit(
        const std::string& calendar, std::int64_t from, std::int64_t to, const Visitor& visitor)
        = 0;
    /// What is to be asked for again, ordered by href.
    virtual Result<std::vector<FailedResource>> failed(const std::string& calendar) = 0;

    /// The outbox, in the order in which its changes were added.
    virtual Result<std::vector<PendingChange>> pending() = 0;

    /// Does all that the batches say, or nothing, whenever the process or the machine stops. The
    /// failure is `missing` where a calendar is not held, and `changed` where `Batch::expected`,
    /// `Batch::basedOn` or a revision of the outbox is not what is held: read again, then decide
    /// again.
    virtual Outcome applyAll(std::span<const Batch> batches) = 0;
    Outcome apply(const Batch& batch) { return applyAll({&batch, 1}); } ///< `applyAll` of one
};

} // namespace Tessel
