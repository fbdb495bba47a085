#include "Tessel/Session/Outbox/Outbox.h"

#include "Tessel/Platform/Foundation/Base/Limits.h"
#include "Tessel/Platform/Foundation/Text/UUID.h"
#include "Tessel/Session/Exchange/Href.h"
#include "Tessel/Session/Outbox/OutboxChange.h"
#include "Tessel/Session/Outbox/OutboxDecision.h"
#include "Tessel/Session/Recurrence/MissingInstance.h"
#include "Tessel/Session/Store/StoreFailures.h"
#include "Tessel/Session/Writes/CreateEvent.h"
#include "Tessel/Session/Writes/MoveEvent.h"

#include <algorithm>

namespace Tessel {

namespace {

using Chain = std::vector<PendingChange>;

/// Where the resource of that place will be after all moves that wait. One without a tag is the one
/// that waits to be created there, should another have moved away before.
std::string placeAfterAll(const Chain& pending, const std::string& before, bool hasNoTag = false)
{
    auto place = before;
    for (const auto& change : pending) {
        if (change.kind == ChangeKind::move && isSamePlace(change.href, place))
            place = placeAfter(change);
        if (hasNoTag && change.kind == ChangeKind::create && isSamePlace(change.href, before))
            place = before;
    }
    return place;
}

/// What waits for the resource at the place, which is after all moves.
Chain chainOf(const Chain& pending, std::string place)
{
    Chain chain;
    for (auto change = pending.rbegin(); change != pending.rend(); ++change) {
        const auto after = placeAfter(*change);
        const bool isAfter = isSamePlace(after, place);
        // What was there before is another one.
        if (!isAfter && isSamePlace(change->href, place)) break;
        if (!isAfter) continue;
        place = change->href;
        chain.push_back(*change);
        if (change->kind == ChangeKind::create) break;
    }
    std::reverse(chain.begin(), chain.end());
    return chain;
}

/// A change of a resource, made on what the changes before it will leave.
PendingChange changeOf(const Resource& resource, ChangeKind kind, const Chain& chain)
{
    PendingChange change {.id = makeUUID(),
        .kind = kind,
        .calendar = folderOf(resource.href),
        .href = resource.href,
        .baseTag = chain.empty() ? resource.tag : std::string(),
        .baseText = chain.empty() ? resource.text : textAfter(chain.back())};
    if (const auto event = EventText::read(change.baseText)) change.uid = event.value().uid();
    return change;
}

PendingChange creationOf(const std::string& calendar, const EventText& event)
{
    return {.id = makeUUID(),
        .kind = ChangeKind::create,
        .calendar = calendar.ends_with('/') ? calendar : calendar + "/",
        .href = placeOfEvent(calendar, event),
        .uid = event.uid(),
        .content = event.text()};
}

/// The event as it will be held in the calendar.
Result<Resource> creatable(const std::string& calendar, const EventText& event,
    const std::unordered_set<std::string>& taken)
{
    if (auto failure = faultOfNew("The event could not be created", calendar, event))
        return std::move(*failure);
    const auto place = placeOfEvent(calendar, event);
    if (!taken.contains(normalPath(place))) return Resource {place, {}, event.text()};
    return Failure {.kind = FailureKind::conflict,
        .reason
        = "The event could not be created: the calendar has one with this UID, at " + place + "."};
}

bool isUnsentCreation(const Chain& chain)
{
    return !chain.empty() && chain.back().kind == ChangeKind::create && isUntouched(chain.back());
}

bool isRemoved(const Chain& chain)
{
    return !chain.empty() && chain.back().kind == ChangeKind::remove;
}

} // namespace

Outbox::Outbox(std::shared_ptr<Store> store)
    : store_(std::move(store))
{
}

Outcome Outbox::apply(const Plan& plan)
{
    if (!store_) return noStoreGiven("The outbox could not be read or written");
    for (int tries = 1;; ++tries) {
        auto held = store_->pending();
        if (!held) return held.failure();
        const auto batch = plan(std::move(held).value());
        if (!batch) return batch.failure();
        if (batch.value().pending.empty() && batch.value().settled.empty()) return {};
        auto outcome = store_->apply(batch.value());
        // Somebody has sent or changed one of them meanwhile.
        const bool isBehind = !outcome && outcome.failure().kind == FailureKind::changed;
        if (!isBehind || tries >= Limits::outboxTries) return outcome;
    }
}

/// What the calendar of that href holds; none where it is not held.
Result<std::optional<std::vector<HeldTag>>> Outbox::held(const std::string& calendar) const
{
    const auto calendars = store_->calendars();
    if (!calendars) return calendars.failure();
    for (const auto& each : calendars.value()) {
        if (!isSameCalendar(each.href, calendar)) continue;
        auto tags = store_->tags(each.href);
        if (!tags) return tags.failure();
        return std::optional(std::move(tags).value());
    }
    return std::optional<std::vector<HeldTag>>();
}

/// Where the resource will be and what waits for it; `missing` where nothing will be there.
Result<Outbox::Expected> Outbox::expected(const Pending& pending, const Resource& resource) const
{
    Expected found {.place = placeAfterAll(pending, resource.href, resource.tag.empty())};
    found.chain = chainOf(pending, found.place);
    const auto gone = [&](const std::string& how) {
        return Failure {
            .kind = FailureKind::missing, .reason = "The event at " + found.place + how};
    };
    if (isRemoved(found.chain)) return gone(" waits to be removed.");
    if (!found.chain.empty()) {
        found.place = placeAfter(found.chain.back());
        return found;
    }
    if (!resource.tag.empty()) return found;
    // What has been sent is in the store. Without a tag and in neither, it is of an outbox that has
    // dropped it.
    const auto tags = held(folderOf(found.place));
    if (!tags) return tags.failure();
    if (!tags.value()) return found;
    for (const auto& each : *tags.value()) {
        if (!isSamePlace(each.href, found.place)) continue;
        found.place = each.href; // as a sync has brought it
        return found;
    }
    return gone(" is neither held nor waiting: it was removed.");
}

/// The paths in the calendar at which something will be once all that waits is sent, among others.
Result<Outbox::Paths> Outbox::takenPaths(const Pending& pending, const std::string& calendar) const
{
    const auto tags = held(calendar);
    if (!tags) return tags.failure();
    Paths taken;
    if (tags.value()) {
        for (const auto& each : *tags.value())
            taken.insert(normalPath(each.href));
    }
    for (const auto& change : pending) {
        const bool leaves = change.kind == ChangeKind::move || change.kind == ChangeKind::remove;
        if (leaves) taken.erase(normalPath(change.href));
        if (change.kind != ChangeKind::remove) taken.insert(normalPath(placeAfter(change)));
    }
    return taken;
}

Result<Resource> Outbox::create(const std::string& calendar, const EventText& event)
{
    return std::move(create(calendar, std::span(&event, 1)).front());
}

std::vector<Result<Resource>> Outbox::create(
    const std::string& calendar, std::span<const EventText> events)
{
    std::vector<Result<Resource>> results;
    const auto outcome = apply([&](const Pending& pending) -> Result<Batch> {
        results.clear();
        auto taken = takenPaths(pending, calendar);
        if (!taken) return taken.failure();
        Batch batch;
        for (const auto& event : events) {
            results.push_back(creatable(calendar, event, taken.value()));
            if (!results.back()) continue;
            batch.pending.push_back(creationOf(calendar, event));
            taken.value().insert(normalPath(batch.pending.back().href));
        }
        return batch;
    });
    if (!outcome) results.assign(events.size(), outcome.failure());
    return results;
}

Result<Resource> Outbox::change(const Resource& resource, const EventEdit& edit)
{
    Resource result = resource;
    const auto outcome = apply([&](const Pending& pending) -> Result<Batch> {
        const auto found = expected(pending, resource);
        if (!found) return found.failure();
        const auto& [place, chain] = found.value();
        result.href = place;
        auto change = changeOf({result.href, resource.tag, resource.text}, ChangeKind::edit, chain);
        const auto base = EventText::read(change.baseText);
        if (!base) return base.failure();
        if (auto failure = missingInstance(base.value(), edit)) return std::move(*failure);
        const auto edited = base.value().apply(edit);
        if (!edited) return edited.failure();
        const auto& [event, following] = edited.value();
        result.tag = change.baseTag;
        result.text = event.text();
        if (result.text == change.baseText && !following) return Batch {};

        Batch batch;
        if (isUnsentCreation(chain)) {
            change = chain.back();
            change.content = event.text();
        } else if (following) {
            // The new event must be the same however often this is sent.
            change.content
                = EventEdit {.instance = edit.instance, .andFollowing = true, .isRemoval = true}
                      .text();
        } else {
            change.content = edit.text();
        }
        batch.pending.push_back(change);
        if (following) {
            auto creation = creationOf(change.calendar, *following);
            // Of a series that is the second part of another: both belong to that division.
            creation.destination = change.destination.empty() ? change.id : change.destination;
            batch.pending.push_back(std::move(creation));
        }
        return batch;
    });
    if (!outcome) return outcome.failure();
    if (result.text != resource.text) result.tag.clear();
    return result;
}

Result<Resource> Outbox::move(const Resource& resource, const std::string& calendar)
{
    if (calendar.empty()) return noCalendarGiven("The event could not be moved");
    Resource result;
    const auto outcome = apply([&](const Pending& pending) -> Result<Batch> {
        const auto found = expected(pending, resource);
        if (!found) return found.failure();
        const auto& [place, chain] = found.value();
        auto change = changeOf({place, resource.tag, resource.text}, ChangeKind::move, chain);
        result = {placeOfMoved(place, calendar), {}, change.baseText};
        if (result.href == place) return Batch {};
        if (!isUnsentCreation(chain)) {
            change.destination = calendar;
            return Batch {.pending = {change}};
        }
        change = chain.back();
        change.calendar = folderOf(result.href);
        change.href = result.href;
        return Batch {.pending = {change}};
    });
    if (!outcome) return outcome.failure();
    return result;
}

Outcome Outbox::remove(const Resource& resource)
{
    return apply([&](const Pending& pending) -> Result<Batch> {
        auto chain = chainOf(pending, placeAfterAll(pending, resource.href, resource.tag.empty()));
        if (isRemoved(chain)) return Batch {};
        Batch batch;
        auto base = resource;
        bool isThere = true;
        while (!chain.empty()
            && (isUntouched(chain.back()) || chain.back().state == ChangeState::parked)) {
            const auto& dropped = chain.back();
            batch.settled.push_back({dropped.id, dropped.revision});
            base = {dropped.href, dropped.baseTag, dropped.baseText};
            isThere = dropped.kind != ChangeKind::create;
            // Whoever removes it has been told of the conflict.
            if (isThere && dropped.texts) {
                base = {dropped.href, {}, dropped.texts->theirs};
                isThere = !base.text.empty();
            }
            chain.pop_back();
        }
        if (!chain.empty()) {
            base.href = placeAfter(chain.back());
            isThere = true;
        }
        if (isThere) batch.pending.push_back(changeOf(base, ChangeKind::remove, chain));
        return batch;
    });
}

Result<std::vector<PendingChange>> Outbox::pending() const
{
    if (!store_) return noStoreGiven("The outbox could not be read");
    return store_->pending();
}

Outcome Outbox::resolve(const std::string& id, Keep keep)
{
    return apply([&](const Pending& pending) -> Result<Batch> {
        const auto found = std::find_if(
            pending.begin(), pending.end(), [&](const auto& change) { return change.id == id; });
        const bool isOpen = found != pending.end()
            && (found->state == ChangeState::parked
                || (found->state == ChangeState::waiting && keep == Keep::theirs));
        if (!isOpen) {
            const bool isOnItsWay = found != pending.end() && found->state == ChangeState::sending;
            return Failure {.kind = FailureKind::missing,
                .reason = isOnItsWay
                    ? "The change may have reached the server already: send the outbox first."
                    : "There is no change in the outbox that waits for a decision and is " + id
                        + "."};
        }
        if (keep == Keep::theirs) return without(pending, *found);
        return Batch {.pending = {again(*found)}};
    });
}

} // namespace Tessel
