#pragma once

#include "Tessel/Session/Store/Store.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <unordered_set>
#include <vector>

namespace Tessel {

/// A resource as it will be once all that waits for it is sent.
struct ExpectedResource {
    /// To be given to the session, or to the outbox where something waits: as the store holds it,
    /// or as `Outbox::create` gave it.
    Resource resource = {};
    std::string place = {}; ///< its href by then
    std::string text = {}; ///< likewise
    bool waits = false; ///< something of it has not been sent
};

/// How the calendars of a store will be once its outbox is sent: what a host shows its user. The
/// outbox is read once, so a view tells nothing of what was changed after it was made.
///
/// What waits for a place in no calendar that the store holds, such as a move into one that
/// somebody has removed meanwhile, counts as not made: the resource is shown where it is until
/// then.
class TESSEL_EXPORT OutboxView final {
public:
    /// Takes one resource; false ends the visit.
    using Visitor = std::function<bool(const ExpectedResource&)>;

    static Result<OutboxView> of(std::shared_ptr<Store> store); ///< a view of what waits by then

    /// All that the calendar will hold: first what nothing waits for, ordered by href.
    Outcome visit(const std::string& calendar, const Visitor& visitor) const;
    /// Only what may have an instance within [`from`, `to`), as `Store::visit`.
    Outcome visit(const std::string& calendar, std::int64_t from, std::int64_t to,
        const Visitor& visitor) const;
    /// What waits and lies in no calendar that the store holds: created in one that is gone, or
    /// changed before that went. In the order in which each was first changed; only a visit of the
    /// calendar that is gone shows them.
    const std::vector<ExpectedResource>& withoutCalendar() const { return withoutCalendar_; }

private:
    explicit OutboxView(std::shared_ptr<Store> store)
        : store_(std::move(store))
    {
    }
    Outcome read(
        const std::vector<PendingChange>& pending, const std::vector<StoredCalendar>& calendars);
    Outcome visit(const std::string& calendar, const std::function<bool(const std::string&)>& isIn,
        const Visitor& visitor,
        const std::function<Outcome(const Store::Visitor&)>& visitHeld) const;

    std::shared_ptr<Store> store_;
    std::vector<ExpectedResource> waiting_;
    std::vector<ExpectedResource> withoutCalendar_;
    std::unordered_set<std::string> changed_; ///< paths of what is held and will be otherwise
    std::unordered_set<std::string> unmade_; ///< of what is held and cannot be as it waits to be
};

} // namespace Tessel
