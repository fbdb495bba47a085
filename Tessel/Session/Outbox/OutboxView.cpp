#include "Tessel/Session/Outbox/OutboxView.h"

#include "Tessel/Session/Exchange/Href.h"
#include "Tessel/Session/Outbox/OutboxChange.h"
#include "Tessel/Session/Recurrence/TextBounds.h"
#include "Tessel/Session/Store/StoreFailures.h"

#include <cstddef>
#include <optional>
#include <unordered_map>
#include <utility>

namespace Tessel {

namespace {

/// A resource on its way through the changes that wait for it.
struct Progress {
    Resource base; ///< before all of them
    bool isNew; ///< there is nothing before them
    std::optional<ExpectedResource> reached; ///< the last that lies in a calendar that is held
    std::optional<ExpectedResource> beyond; ///< where that is not the last of all
};

std::vector<Progress> progressOf(const std::vector<PendingChange>& pending,
    const std::function<bool(const std::string&)>& isHeld)
{
    std::vector<Progress> all;
    std::unordered_map<std::string, std::size_t> numbers; // by the path where each is by then
    for (const auto& change : pending) {
        auto known = numbers.extract(normalPath(change.href));
        if (!known) {
            const bool isNew = change.kind == ChangeKind::create;
            all.push_back({{change.href, isNew ? std::string() : change.baseTag,
                               isNew ? change.content : change.baseText},
                isNew, std::nullopt, std::nullopt});
        }
        const auto number = known ? known.mapped() : all.size() - 1;
        auto& each = all[number];
        ExpectedResource next {each.base, placeAfter(change), textAfter(change), true};
        numbers.insert_or_assign(normalPath(next.place), number);
        if (isHeld(next.place)) {
            each.reached = std::move(next);
            each.beyond.reset();
        } else {
            each.beyond = std::move(next);
        }
    }
    return all;
}

std::string pathOfFolder(const std::string& folder)
{
    return normalPath(folder.ends_with('/') ? folder : folder + "/");
}

} // namespace

Result<OutboxView> OutboxView::of(std::shared_ptr<Store> store)
{
    if (!store) return noStoreGiven("The outbox could not be read");
    const auto pending = store->pending();
    if (!pending) return pending.failure();
    const auto calendars = store->calendars();
    if (!calendars) return calendars.failure();
    OutboxView view(std::move(store));
    if (auto outcome = view.read(pending.value(), calendars.value()); !outcome)
        return outcome.failure();
    return view;
}

Outcome OutboxView::read(
    const std::vector<PendingChange>& pending, const std::vector<StoredCalendar>& calendars)
{
    std::unordered_map<std::string, std::string> hrefs; // of calendars, by their paths
    for (const auto& calendar : calendars)
        hrefs.emplace(pathOfFolder(calendar.href), calendar.href);
    const auto calendarOf
        = [&](const std::string& place) { return hrefs.find(pathOfFolder(folderOf(place))); };
    const auto isHeld = [&](const std::string& place) { return calendarOf(place) != hrefs.end(); };

    const auto add = [](std::vector<ExpectedResource>& to, ExpectedResource& expected) {
        // Once it is removed there is no text.
        if (!expected.text.empty()) to.push_back(std::move(expected));
    };
    for (auto& each : progressOf(pending, isHeld)) {
        auto path = normalPath(each.base.href);
        if (each.reached) {
            changed_.insert(std::move(path));
            add(waiting_, *each.reached);
            continue;
        }
        if (const auto calendar = calendarOf(each.base.href);
            !each.isNew && calendar != hrefs.end()) {
            const auto held = store_->resource(calendar->second, each.base.href);
            if (!held) return held.failure();
            if (held.value()) {
                unmade_.insert(std::move(path));
                continue;
            }
        }
        add(withoutCalendar_, *each.beyond);
    }
    return {};
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
    const bool isUntouched = changed_.empty() && unmade_.empty();
    auto outcome = visitHeld([&](const Resource& resource) {
        const auto path = isUntouched ? std::string() : normalPath(resource.href);
        if (isUntouched || !changed_.contains(path))
            goesOn = visitor({resource, resource.href, resource.text, unmade_.contains(path)});
        return goesOn;
    });
    if (!outcome) return outcome;
    for (const auto* const all : {&waiting_, &withoutCalendar_}) {
        for (const auto& each : *all) {
            if (!goesOn) break;
            if (liesIn(each.place, calendar) && isIn(each.text)) goesOn = visitor(each);
        }
    }
    return {};
}

} // namespace Tessel
