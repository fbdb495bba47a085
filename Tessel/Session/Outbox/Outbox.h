#pragma once

#include "Tessel/Session/Store/Store.h"
#include "Tessel/Session/Text/EventText.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace Tessel {

/// Changes that a host makes whether or not the server can be reached. They are written to the
/// store at once, last as long as it does, and are sent by `Session::sendOutbox`, those of one
/// resource in their order. The store's resources stay as the server has them until then; what is
/// given here is how a resource will be, to be shown and to be changed further. `OutboxView` shows
/// all of them.
///
/// Members write to the store on the calling thread, may be called from any thread, and by several
/// processes on one store at once.
class TESSEL_EXPORT Outbox final {
public:
    explicit Outbox(std::shared_ptr<Store> store); ///< several may work on one store

    /// What it gives, and what the other members give of a changed resource, has an empty tag: the
    /// session's own calls know nothing of what waits, so give it to an outbox until it is sent.
    /// `conflict` where an event of this UID is held in the calendar, or waits to be created there.
    Result<Resource> create(const std::string& calendar, const EventText& event);
    /// An edit of an event that waits to be created joins it. An edit that divides a series waits
    /// as two changes, the second a new event. Fails as `EventText::apply` does, and as `missing`
    /// for what waits to be removed or was removed before it was ever sent.
    Result<Resource> change(const Resource& resource, const EventEdit& edit);
    /// `missing` as with `change`.
    Result<Resource> move(const Resource& resource, const std::string& calendar);
    /// Ends what waits for the resource and was never sent; what was never created is not sent at
    /// all.
    Outcome remove(const Resource& resource);

    /// All that waits, in its order; `PendingChange::state` says for what.
    Result<std::vector<PendingChange>> pending() const;

    /// Whose version of a parked change is to stay.
    enum class Keep {
        /// Makes the change on what the server holds by now, over what it was in conflict with; an
        /// event that was removed there is created again. For a change that was refused for another
        /// reason: tries again.
        mine,
        /// Gives the change up; what was made on it later is made on what was there before, and
        /// what was made on an event that was to be created goes with it.
        theirs,
    };
    /// Decides about a parked change. With `Keep::theirs` also about one that waits to be sent, but
    /// for one that may have reached the server. `missing` where there is none of that id.
    Outcome resolve(const std::string& id, Keep keep);

private:
    using Pending = std::vector<PendingChange>;
    using Plan = std::function<Result<Batch>(Pending)>;
    Outcome apply(const Plan& plan);
    Result<bool> isPlaceTaken(
        const Pending& pending, const std::string& calendar, const std::string& place) const;
    std::optional<Failure> goneBefore(
        const Pending& chain, const Resource& resource, const std::string& place) const;

    const std::shared_ptr<Store> store_;
};

} // namespace Tessel
