#include "Tessel/Session/Outbox/OutboxDecision.h"

#include "Tessel/Session/Outbox/OutboxChange.h"
#include "Tessel/Session/Text/EventText.h"

#include <algorithm>
#include <set>
#include <string>

namespace Tessel {

namespace {

/// Whether a series may have been cut as the change says before somebody else changed or removed
/// it: then the event that was made of the other days holds them alone.
bool mayBeDivided(const PendingChange& change)
{
    if (change.attempts < 2 || !change.texts) return false;
    if (change.texts->theirs.empty()) return true;
    const auto theirs = EventText::read(change.texts->theirs);
    const auto edit = EventEdit::read(change.content);
    if (!theirs || !edit) return false;
    const auto again = theirs.value().apply(edit.value());
    return again && again.value().event.text() == theirs.value().text();
}

/// Whether it is an event that holds days of a series that was divided.
bool isSecondPart(const PendingChange& change)
{
    return change.kind == ChangeKind::create && !change.destination.empty();
}

PendingChange madeOn(PendingChange change, const Resource& left)
{
    change.href = left.href;
    change.calendar = folderOf(left.href);
    change.baseTag = left.tag;
    if (!isWholeText(change)) change.baseText = left.text;
    return change;
}

/// The step that gives up a change with what cannot be without it.
Batch leavingOut(const std::vector<PendingChange>& pending, const PendingChange& change)
{
    Batch batch {.settled = {{change.id, change.revision}}};
    const bool isOfNothing = change.kind == ChangeKind::create;
    std::set<std::string> gone;
    if (!mayBeDivided(change)) gone.insert(change.id);
    std::set<std::string> divisions;
    for (const auto& each : pending)
        if (isSecondPart(each)) divisions.insert(each.destination);

    // What each of the others is made on now, and what it would be made on were nobody else's.
    Resource left {change.href, change.baseTag, change.baseText};
    auto seen = left;
    const bool hasTheirs = change.texts && !change.texts->theirs.empty();
    if (hasTheirs && (change.kind == ChangeKind::edit || change.kind == ChangeKind::remove)) {
        left = {change.href, {}, change.texts->theirs};
        seen.tag.clear();
    }
    auto place = placeAfter(change);
    const auto start = std::find_if(
        pending.begin(), pending.end(), [&](const auto& each) { return each.id == change.id; });
    for (auto later = start + 1; later != pending.end(); ++later) {
        const bool isOfGone = isSecondPart(*later) && gone.contains(later->destination);
        if (isOfGone || (isOfNothing && concerns(*later, place))) {
            batch.settled.push_back({later->id, later->revision});
            gone.insert(later->id);
            if (isOfNothing && isSamePlace(later->href, place)) place = placeAfter(*later);
            continue;
        }
        if (later->kind == ChangeKind::create || !isSamePlace(later->href, place)) continue;
        place = placeAfter(*later);
        // The second part of a series holds the days as they were seen when it was divided.
        auto changed = madeOn(*later, divisions.contains(later->id) ? seen : left);
        left = {placeAfter(changed), {}, textAfter(changed)};
        seen = {left.href, {}, textAfter(madeOn(*later, seen))};
        batch.pending.push_back(std::move(changed));
    }
    return batch;
}

} // namespace

Result<Batch> without(const std::vector<PendingChange>& pending, const PendingChange& change)
{
    if (!isSecondPart(change)) return leavingOut(pending, change);
    const auto first = std::find_if(pending.begin(), pending.end(),
        [&](const auto& each) { return each.id == change.destination; });
    if (first != pending.end() && first->state == ChangeState::sending)
        return Failure {.kind = FailureKind::missing,
            .reason = "The series may have been shortened already: send the outbox first."};
    const bool isWhole
        = first != pending.end() && first->kind == ChangeKind::edit && !mayBeDivided(*first);
    if (isWhole) return leavingOut(pending, *first);
    return Failure {.kind = FailureKind::conflict,
        .reason
        = "The days of this event are in no other any more, since the series that they were "
          "taken from is shortened: send it again, or remove the event."};
}

PendingChange again(PendingChange change)
{
    change.state = ChangeState::waiting;
    change.attempts = 0;
    change.notBefore = 0;
    change.reason.clear();
    if (!change.texts) return change;
    change.baseTag.clear();
    change.baseText = change.texts->theirs;
    if (change.kind == ChangeKind::create && !change.baseText.empty()) {
        change.kind = ChangeKind::edit; // of the whole text
    } else if (change.kind == ChangeKind::edit && change.baseText.empty()) {
        change.kind = ChangeKind::create;
        change.content = change.texts->mine;
    } else if (change.kind == ChangeKind::move && change.baseText.empty()) {
        change.href = placeAfter(change);
        change.calendar = folderOf(change.href);
        change.destination.clear();
        change.kind = ChangeKind::create;
        change.content = change.texts->mine;
    }
    change.texts.reset();
    return change;
}

} // namespace Tessel
