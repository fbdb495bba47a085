#include "Tessel/Session/Outbox/OutboxDecision.h"

#include "Tessel/Session/Outbox/OutboxChange.h"
#include "Tessel/Session/Text/EventText.h"

#include <algorithm>

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

} // namespace

Batch without(std::vector<PendingChange>& pending, const PendingChange& change)
{
    Batch batch {.settled = {{change.id, change.revision}}};
    const bool isOfNothing = change.kind == ChangeKind::create;
    const bool keepsTheRest = mayBeDivided(change);
    Resource left {change.href, change.baseTag, change.baseText};
    const bool hasTheirs = change.texts && !change.texts->theirs.empty();
    if (hasTheirs && (change.kind == ChangeKind::edit || change.kind == ChangeKind::remove))
        left = {change.href, {}, change.texts->theirs};
    auto place = placeAfter(change);
    const auto start = std::find_if(
        pending.begin(), pending.end(), [&](const auto& each) { return each.id == change.id; });
    for (auto later = start + 1; later != pending.end(); ++later) {
        const bool isDivided
            = later->kind == ChangeKind::create && later->destination == change.href;
        if ((isDivided && !keepsTheRest) || (isOfNothing && concerns(*later, place))) {
            batch.settled.push_back({later->id, later->revision});
            if (isOfNothing && later->href == place) place = placeAfter(*later);
            continue;
        }
        if (later->href != place || later->kind == ChangeKind::create) continue;
        place = placeAfter(*later);
        later->href = left.href;
        later->calendar = folderOf(left.href);
        later->baseTag = left.tag;
        if (!isWholeText(*later)) later->baseText = left.text;
        left = {placeAfter(*later), {}, textAfter(*later)};
        batch.pending.push_back(*later);
    }
    return batch;
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
    }
    change.texts.reset();
    return change;
}

} // namespace Tessel
