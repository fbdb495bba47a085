#include "Tessel/Session/Outbox/OutboxRun.h"

#include "Tessel/Platform/Foundation/Time/Date.h"
#include "Tessel/Session/Exchange/Href.h"
#include "Tessel/Session/Outbox/OutboxChange.h"
#include "Tessel/Session/Text/SameMeaning.h"

#include <algorithm>

namespace Tessel {

namespace {

constexpr std::int64_t firstPause = 5'000;
constexpr std::int64_t longestPause = 3'600'000;

std::int64_t now()
{
    return Date().millisecondsSince1970();
}

std::int64_t pauseAfter(int attempts, const Failure& failure)
{
    const auto growing = firstPause << std::clamp(attempts - 1, 0, 20);
    const std::chrono::milliseconds asked = failure.retryAfter.value_or(std::chrono::seconds(0));
    return std::max(std::min(growing, longestPause), std::int64_t(asked.count()));
}

/// Whether the same request may well succeed later.
bool mayPass(FailureKind kind)
{
    switch (kind) {
    case FailureKind::unreachable:
    case FailureKind::untrusted:
    case FailureKind::timedOut:
    case FailureKind::cancelled:
    case FailureKind::unauthorized:
    case FailureKind::busy:
    case FailureKind::serverFault:
    case FailureKind::notSent:
    case FailureKind::storage:
        return true;
    default:
        return false;
    }
}

/// Whether others would fail in the same way; asking on with a refused credential may lock the
/// account.
bool concernsAll(FailureKind kind)
{
    return mayPass(kind) && kind != FailureKind::serverFault;
}

/// Whether the host may know sooner than any pause that it will go better now: the network is
/// there, the password another one.
bool isForTheHostToSay(const Failure& failure)
{
    return !failure.isUncertain
        && (failure.kind == FailureKind::unreachable || failure.kind == FailureKind::untrusted
            || failure.kind == FailureKind::unauthorized || failure.kind == FailureKind::notSent
            || failure.kind == FailureKind::cancelled);
}

} // namespace

OutboxRun::OutboxRun(std::shared_ptr<Channel> channel, std::shared_ptr<Store> store,
    SendReport report, std::shared_ptr<PendingCall<Sent>> call)
    : channel_(std::move(channel))
    , store_(std::move(store))
    , report_(std::move(report))
    , call_(std::move(call))
{
}

void OutboxRun::start()
{
    channel_->step(call_, [self = shared_from_this()] { self->pass(); });
}

void OutboxRun::pass()
{
    auto pending = store_->pending();
    if (!pending) return call_->fail(pending.failure());
    const auto calendars = store_->calendars();
    if (!calendars) return call_->fail(calendars.failure());
    pending_ = std::move(pending).value();
    calendars_.clear();
    for (const auto& calendar : calendars.value())
        calendars_.push_back(calendar.href);
    divisions_.clear();
    for (const auto& change : pending_)
        if (change.kind == ChangeKind::create) divisions_.insert(change.destination);
    heldBack_.clear();
    next_ = 0;
    triedBefore_ = tried_;
    sent_.waiting = 0;
    sent_.nextTry.reset();
    sendNext();
}

void OutboxRun::sendNext()
{
    for (; next_ < pending_.size() && !sent_.stopped; ++next_) {
        auto& change = pending_[next_];
        if (change.state == ChangeState::parked) {
            holdBack(change);
            continue;
        }
        const bool waits = change.notBefore > now();
        if (waits) sent_.nextTry = std::min(sent_.nextTry.value_or(INT64_MAX), change.notBefore);
        const OutboxSending::Standing standing {
            .isLeftBehind = change.state == ChangeState::sending,
            .isDivision = divisions_.contains(change.id)};
        if (waits || isHeldBack(change) || !claim(change)) {
            holdBack(change);
            ++sent_.waiting;
            continue;
        }
        ++next_;
        const auto self = shared_from_this();
        return OutboxSending(channel_, call_, std::move(change), standing,
            {[self](const auto& sent, const auto& resource, HeldThere held) {
                 self->settle(sent, resource, held);
             },
                [self](
                    const auto& sent, Failure failure) { self->fail(sent, std::move(failure)); }})
            .start();
    }
    if (sent_.stopped) sent_.waiting += pending_.size() - next_;
    // What was added meanwhile, or what waited for one of these.
    if (!sent_.stopped && tried_ != triedBefore_) return pass();
    call_->end(std::move(sent_));
}

/// A new event that a series was divided into waits for the series.
bool OutboxRun::isHeldBack(const PendingChange& change) const
{
    const bool isSecondPart = change.kind == ChangeKind::create;
    return heldBack_.contains(normalPath(change.href))
        || heldBack_.contains(normalPath(placeAfter(change)))
        || (isSecondPart && heldBack_.contains(change.destination));
}

void OutboxRun::holdBack(const PendingChange& change)
{
    heldBack_.insert(change.id);
    heldBack_.insert(normalPath(change.href));
    heldBack_.insert(normalPath(placeAfter(change)));
}

/// Whether what the result is of, and nothing else, came before the change.
bool OutboxRun::isMadeOn(const PendingChange& change, const Settled& before)
{
    const bool isNext = change.baseTag.empty() && before.held == HeldThere::ours;
    return isNext || isSameButStamps(before.resource.text, change.baseText);
}

/// Makes it ours to send; false where somebody else was faster.
bool OutboxRun::claim(PendingChange& change)
{
    const auto previous = change;
    // Others leave it alone for as long as it may well take.
    change.state = ChangeState::sending;
    change.notBefore = now() + 2 * channel_->settings().patience.count();
    ++change.attempts;
    const auto before = results_.find(normalPath(change.href));
    if (before != results_.end() && isMadeOn(change, before->second)) {
        change.baseTag = before->second.resource.tag;
        change.baseText = before->second.resource.text;
    }
    heldBefore_.clear();
    const bool isLeftBehind = previous.state == ChangeState::sending;
    if (look(change.href, isLeftBehind) && look(placeAfter(change), isLeftBehind)
        && write(change)) {
        ++change.revision;
        return true;
    }
    change = previous;
    return false;
}

/// Remembers what is held at the place.
bool OutboxRun::look(const std::string& place, bool isLeftBehind)
{
    const auto calendar = calendarOf(place);
    if (calendar.empty()) return true;
    auto held = heldAt(calendar, place, isLeftBehind);
    if (!held) {
        sent_.stopped = held.failure();
        return false;
    }
    heldBefore_[calendar] = std::move(held).value().value_or(HeldTag {place, {}});
    return true;
}

/// What is held at the place, however it is spelled there: a sync takes the server's spelling. Of
/// one that may have been sent before, a sync may have brought it in any.
Result<std::optional<HeldTag>> OutboxRun::heldAt(
    const std::string& calendar, const std::string& place, bool isLeftBehind) const
{
    using Found = std::optional<HeldTag>;
    for (const auto& href : spellingsOf(calendar, place)) {
        const auto held = store_->resource(calendar, href);
        if (!held) return held.failure();
        if (held.value()) return Found({href, held.value()->tag});
    }
    if (!isLeftBehind) return Found();
    auto tags = store_->tags(calendar);
    if (!tags) return tags.failure();
    for (auto& each : tags.value())
        if (normalPath(each.href) == normalPath(place)) return Found(std::move(each));
    return Found();
}

/// Takes the name that the store has for what the batch is about, and has it as it was.
void OutboxRun::expectAsBefore(Batch& batch) const
{
    const auto before = heldBefore_.find(batch.calendar);
    if (before == heldBefore_.end()) return;
    auto expected = before->second;
    // A sync may have brought it meanwhile, under a name of its own.
    if (expected.tag.empty())
        if (const auto held = heldAt(batch.calendar, expected.href, false); held && held.value())
            expected.href = held.value()->href;
    const auto path = normalPath(expected.href);
    for (auto& resource : batch.upserts)
        if (normalPath(resource.href) == path) resource.href = expected.href;
    for (auto& href : batch.removed)
        if (normalPath(href) == path) href = expected.href;
    batch.expected.push_back(std::move(expected));
}

bool OutboxRun::write(const PendingChange& change)
{
    const auto outcome = store_->apply({.pending = {change}});
    if (!outcome && outcome.failure().kind != FailureKind::changed)
        sent_.stopped = outcome.failure();
    return bool(outcome);
}

std::string OutboxRun::calendarOf(const std::string& place) const
{
    const auto found = std::find_if(calendars_.begin(), calendars_.end(),
        [&](const auto& calendar) { return liesIn(place, calendar); });
    return found == calendars_.end() ? std::string() : *found;
}

void OutboxRun::settle(const PendingChange& change, Resource resource, HeldThere held)
{
    results_.insert_or_assign(normalPath(resource.href), Settled {resource, held});
    Batch here {.calendar = calendarOf(change.href)};
    Batch there {.calendar = calendarOf(resource.href)};
    Batch settled {.settled = {{change.id, change.revision}}};
    const bool isGone = change.kind == ChangeKind::remove || resource.href != change.href;
    if (isGone) here.removed.push_back(change.href);
    if (change.kind != ChangeKind::remove) there.upserts.push_back(resource);
    std::vector<Batch> batches {settled};
    for (auto* const batch : {&here, &there}) {
        if (batch->calendar.empty()) continue;
        expectAsBefore(*batch);
        if (!batch->upserts.empty()) resource.href = batch->upserts.front().href;
        if (change.kind == ChangeKind::remove && !batch->removed.empty())
            resource.href = batch->removed.front();
        batches.push_back(std::move(*batch));
    }
    auto outcome = store_->applyAll(batches);
    // A calendar that is not held any more needs no resource; what a sync has brought meanwhile may
    // be newer, and what is not, the next sync brings.
    if (!outcome && outcome.failure().kind != FailureKind::storage)
        outcome = store_->apply(settled);
    if (!outcome && outcome.failure().kind != FailureKind::changed)
        sent_.stopped = outcome.failure();
    sent_.done.push_back({change.id, change.kind, std::move(resource)});
    tried();
}

void OutboxRun::fail(PendingChange change, Failure failure)
{
    const bool isOpen = failure.isUncertain || mayPass(failure.kind);
    change.reason = failure.reason;
    if (isOpen) {
        // While it may have arrived it stays as being sent, so that it is looked for.
        change.state = failure.isUncertain ? ChangeState::sending : ChangeState::waiting;
        const auto nextTry = now() + pauseAfter(change.attempts, failure);
        change.notBefore = isForTheHostToSay(failure) ? 0 : nextTry;
        ++sent_.waiting;
        sent_.nextTry = std::min(sent_.nextTry.value_or(INT64_MAX), nextTry);
        if (concernsAll(failure.kind)) sent_.stopped = std::move(failure);
    } else {
        change.state = ChangeState::parked;
        change.notBefore = 0;
        if (failure.texts) change.texts = *failure.texts;
        // Whatever is there by now, what comes next is made on what the host has seen of it.
        results_.erase(normalPath(change.href));
        sent_.parked.push_back(change.id);
    }
    holdBack(change);
    write(change);
    tried();
}

void OutboxRun::tried()
{
    ++tried_;
    if (report_) {
        call_->report(
            [report = report_, progress = SendProgress {tried_, tried_ + pending_.size() - next_}] {
                report(progress);
            });
    }
    channel_->step(call_, [self = shared_from_this()] { self->sendNext(); });
}

} // namespace Tessel
