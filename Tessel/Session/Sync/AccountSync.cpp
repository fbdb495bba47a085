#include "Tessel/Session/Sync/AccountSync.h"

#include "Tessel/Session/Exchange/Href.h"

#include <algorithm>

namespace Tessel {

namespace {

/// Whether no other calendar would fare better.
bool concernsAll(FailureKind kind)
{
    return kind == FailureKind::unauthorized || kind == FailureKind::busy
        || kind == FailureKind::unreachable || kind == FailureKind::untrusted
        || kind == FailureKind::timedOut;
}

/// Whether nothing of a calendar has changed but what it holds.
bool isListedAs(StoredCalendar listed, const StoredCalendar& held)
{
    listed.mark = held.mark;
    return listed == held;
}

} // namespace

AccountSync::AccountSync(std::shared_ptr<Channel> channel, std::vector<std::string> homes,
    std::shared_ptr<Store> store, std::optional<std::string> only, ProgressReport progress,
    std::shared_ptr<PendingCall<Changes>> call)
    : channel_(std::move(channel))
    , homes_(std::move(homes))
    , store_(std::move(store))
    , only_(std::move(only))
    , progress_(std::move(progress))
    , call_(std::move(call))
{
}

void AccountSync::start()
{
    listCalendars(channel_, homes_, call_,
        [self = shared_from_this()](auto result) { self->readList(std::move(result)); });
}

void AccountSync::readList(Result<CalendarList> result)
{
    if (!result) return call_->fail(result.failure());
    listed_ = std::move(result).value();
    auto held = store_->calendars();
    if (!held) return call_->fail(held.failure());

    if (only_) {
        const auto path = normalPath(*only_);
        std::erase_if(
            listed_, [&](const auto& calendar) { return normalPath(calendar.href) != path; });
        if (listed_.empty()) {
            return call_->fail({.kind = FailureKind::missing,
                .reason = "The server lists no calendar at " + *only_ + "."});
        }
    }
    if (auto failure = holdCalendars(held.value())) return call_->fail(std::move(*failure));
    syncAll();
}

/// Holds what is listed and lets go of what is not, with what it held.
std::optional<Failure> AccountSync::holdCalendars(const CalendarList& held)
{
    std::unordered_map<std::string, const StoredCalendar*> heldByPath;
    for (const auto& calendar : held)
        heldByPath.emplace(normalPath(calendar.href), &calendar);

    for (auto& calendar : listed_) {
        const auto found = heldByPath.find(normalPath(calendar.href));
        if (found == heldByPath.end()) {
            changes_.addedCalendars.push_back(calendar.href);
        } else {
            const auto& held = *found->second;
            heldByPath.erase(found);
            calendar.href = held.href;
            marks_[held.href] = held.mark;
            if (isListedAs(calendar, held)) continue;
        }
        if (const auto outcome = store_->put(calendar); !outcome) return outcome.failure();
    }
    if (only_) return std::nullopt;
    for (const auto& calendar : held) {
        if (!heldByPath.contains(normalPath(calendar.href))) continue;
        if (const auto outcome = store_->removeCalendar(calendar.href); !outcome)
            return outcome.failure();
        changes_.deletedCalendars.push_back(calendar.href);
    }
    return std::nullopt;
}

/// Most calendars are unchanged and end at once, any number of them one after another.
void AccountSync::syncAll()
{
    while (!isUnderWay_ && !call_->isDone()) {
        if (next_ == listed_.size()) return call_->end(std::move(changes_));
        isUnderWay_ = true;
        isStarting_ = true;
        syncOne(listed_[next_++]);
        isStarting_ = false;
    }
}

void AccountSync::syncOne(const StoredCalendar& calendar)
{
    const auto report = [self = shared_from_this(), number = next_, href = calendar.href](
                            std::size_t done, std::size_t total) {
        if (!self->progress_) return;
        self->call_->report(
            [self, progress = SyncProgress {href, number, self->listed_.size(), done, total}] {
                self->progress_(progress);
            });
    };
    const auto sync = std::make_shared<CalendarSync>(channel_, store_, calendar,
        marks_[calendar.href], call_, report,
        [self = shared_from_this()](CalendarChanges changes) { self->take(std::move(changes)); });
    sync->start();
}

void AccountSync::take(CalendarChanges changes)
{
    // Asking on would lock the account, or trouble a server that asked for quiet.
    auto failure = changes.failure;
    changes_.calendars.push_back(std::move(changes));
    while (failure && concernsAll(failure->kind) && next_ < listed_.size()) {
        const auto& left = listed_[next_++];
        changes_.calendars.push_back(
            {.calendar = left.href, .displayName = left.displayName, .failure = failure});
    }
    isUnderWay_ = false;
    if (!isStarting_) syncAll();
}

} // namespace Tessel
