#pragma once

#include "Tessel/Session/Store/Store.h"
#include "Tessel/Session/Text/EventText.h"

#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <unordered_set>
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
    /// `conflict` where something is held at the place in the calendar that the UID determines, or
    /// will be by then. An event of this UID that somebody else put at another place is not looked
    /// for, since a store has no index of UIDs: the server refuses the new one when it is sent.
    Result<Resource> create(const std::string& calendar, const EventText& event);
    /// Many at once, with the results in their order: one that cannot be created is no hindrance to
    /// the others. Of two with one UID the second is in `conflict`. Takes time linear in what is
    /// given, held in the calendar and waiting; one by one, all of that counts for each.
    std::vector<Result<Resource>> create(
        const std::string& calendar, std::span<const EventText> events);
    /// An edit of an event that waits to be created joins it. An edit that divides a series waits
    /// as two changes: the series without the instance and those that follow, and a new event that
    /// holds them as they are known here. What anybody else has made of them by then parks the
    /// first, and the second with it. Fails as `EventText::apply` does, and as `missing`
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
        /// what was made on an event that was to be created goes with it. A new event that a series
        /// was divided into stays as it was made. With one of the two changes that divide a series
        /// the other one goes too, so that it has all its days again. Where the series may be
        /// shortened at the server already, the new event alone holds its days: it stays when the
        /// other change is given up, and giving it up is a `conflict`. `mine` tries it again;
        /// whoever wants its days gone removes the event.
        theirs,
    };
    /// Decides about a parked change. With `Keep::theirs` also about one that waits to be sent, but
    /// for one that may have reached the server. `missing` where there is none of that id.
    Outcome resolve(const std::string& id, Keep keep);

private:
    using Pending = std::vector<PendingChange>;
    using Plan = std::function<Result<Batch>(Pending)>;
    Outcome apply(const Plan& plan);
    /// How a resource will be found once all that waits is sent.
    struct Expected {
        std::string place;
        Pending chain = {}; ///< what waits for it
    };
    Result<Expected> expected(const Pending& pending, const Resource& resource) const;
    using Paths = std::unordered_set<std::string>;
    Result<Paths> takenPaths(const Pending& pending, const std::string& calendar) const;
    Result<std::optional<std::vector<HeldTag>>> held(const std::string& calendar) const;

    const std::shared_ptr<Store> store_;
};

} // namespace Tessel
