#include "Tessel/Session/Outbox/OutboxView.h"

#include "Tessel/Session/Exchange/Href.h"
#include "Tessel/Session/Outbox/OutboxChange.h"
#include "Tessel/Session/Recurrence/TextBounds.h"
#include "Tessel/Session/Store/StoreFailures.h"

#include <cstddef>
#include <unordered_map>
#include <utility>

namespace Tessel {

Result<OutboxView> OutboxView::of(std::shared_ptr<Store> store)
{
    if (!store) return noStoreGiven("The outbox could not be read");
    const auto pending = store->pending();
    if (!pending) return pending.failure();
    OutboxView view(std::move(store));
    view.read(pending.value());
    return view;
}

void OutboxView::read(const std::vector<PendingChange>& pending)
{
    std::unordered_map<std::string, std::size_t> numbers; // by the path where each is by then
    for (const auto& change : pending) {
        auto path = normalPath(change.href);
        auto known = numbers.extract(path);
        if (!known) {
            const bool isNew = change.kind == ChangeKind::create;
            waiting_.push_back({.resource = {change.href, isNew ? std::string() : change.baseTag,
                                    isNew ? change.content : change.baseText},
                .waits = true});
            changed_.insert(path);
        }
        const auto number = known ? known.mapped() : waiting_.size() - 1;
        waiting_[number].place = placeAfter(change);
        waiting_[number].text = textAfter(change); // none, once it is removed
        numbers.insert_or_assign(normalPath(waiting_[number].place), number);
    }
    std::erase_if(waiting_, [](const auto& each) { return each.text.empty(); });
}

Outcome OutboxView::visit(const std::string& calendar, const Visitor& visitor) const
{
    return visit(
        calendar, [](const auto&) { return true; }, visitor,
        [&](const auto& held) { return store_->visit(calendar, held); });
}

Outcome OutboxView::visit(
    const std::string& calendar, std::int64_t from, std::int64_t to, const Visitor& visitor) const
{
    return visit(
        calendar,
        [&](const auto& text) {
            return bounds(text).meets({from, to});
        },
        visitor, [&](const auto& held) { return store_->visit(calendar, from, to, held); });
}

Outcome OutboxView::visit(const std::string& calendar,
    const std::function<bool(const std::string&)>& isIn, const Visitor& visitor,
    const std::function<Outcome(const Store::Visitor&)>& visitHeld) const
{
    bool goesOn = true;
    const auto outcome = visitHeld([&](const Resource& resource) {
        if (changed_.empty() || !changed_.contains(normalPath(resource.href)))
            goesOn = visitor({resource, resource.href, resource.text});
        return goesOn;
    });
    if (!outcome) return outcome;
    for (const auto& each : waiting_) {
        if (!goesOn) break;
        if (liesIn(each.place, calendar) && isIn(each.text)) goesOn = visitor(each);
    }
    return {};
}

} // namespace Tessel
