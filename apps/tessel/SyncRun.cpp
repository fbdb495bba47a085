#include "apps/tessel/SyncRun.h"

#include "apps/tessel/EventReading.h"

#include <algorithm>

namespace Tessel::App {

SyncRun::SyncRun(Host& host)
    : StoreDelegate(host.store())
    , host_(host)
{
}

SyncRun::Totals SyncRun::run()
{
    client_ = host_.makeClient();
    client_->setSyncDelegate(shared_from_this());
    client_->setDataSource(shared_from_this());
    try {
        host_.waitFor(
            "sync", [this](const auto&) { return isOver(); }, [this] { client_->sync(); });
    } catch (const StepFailed&) {
        conclude();
        throw;
    }
    conclude();
    return totals_;
}

bool SyncRun::isOver()
{
    const std::lock_guard lock(mutex_);
    return areListingsOver_ && std::all_of(states_.begin(), states_.end(), [](const auto& entry) {
        return !entry.second.isListed || entry.second.isFinished;
    });
}

void SyncRun::conclude()
{
    const auto exchanges = host_.log()->exchanges();
    const std::lock_guard lock(mutex_);
    for (const auto& calendar : order_) {
        if (!conclude(states_.at(calendar->href), exchanges)) {
            totals_.failed.push_back(calendar->displayName);
        }
    }
}

bool SyncRun::conclude(const CalendarState& state, const std::vector<Exchange>& exchanges)
{
    const auto& calendar = *state.calendar;
    const auto url = host_.url(calendar.href);
    bool isEmpty = false;
    for (const auto& exchange : exchanges) {
        if (exchange.method != "REPORT" || exchange.url != url) continue;
        if (exchange.status != 207) return false;
        isEmpty = exchange.isWithout("response");
    }
    if (!state.isFinished && !(isEmpty && !state.isListed)) return false;

    auto gone = state.isListed ? state.held : store_.events(state.calendar);
    std::erase_if(gone, [&](const auto& event) { return state.stillThere.contains(event->href); });
    store_.remove(calendar, gone);
    print("event removed", calendar, gone);
    totals_.eventsRemoved += gone.size();
    store_.setSynced(calendar);
    return true;
}

std::optional<StoreDelegate::Events> SyncRun::events(const Calendar& calendar)
{
    auto held = store_.events(calendar);
    const std::lock_guard lock(mutex_);
    auto& state = states_[calendar->href];
    state.isListed = true;
    state.held = held;
    return held;
}

void SyncRun::calendarsDeleted(const Calendars& calendars)
{
    for (const auto& calendar : calendars) {
        store_.remove(*calendar);
        print("calendar removed", *calendar);
    }
    totals_.calendarsRemoved = calendars.size();
}

void SyncRun::calendarsAdded(const Calendars& calendars)
{
    toSync(calendars);
    for (const auto& calendar : calendars)
        print("calendar added", *calendar);
    totals_.calendarsAdded = calendars.size();
}

void SyncRun::calendarsEdited(const Calendars& calendars)
{
    toSync(calendars);
    for (const auto& calendar : calendars)
        print("calendar edited", *calendar);
    totals_.calendarsEdited = calendars.size();
}

void SyncRun::toSync(const Calendars& calendars)
{
    const std::lock_guard lock(mutex_);
    for (const auto& calendar : calendars) {
        store_.save(*calendar);
        states_[calendar->href].calendar = calendar;
        order_.push_back(calendar);
    }
}

void SyncRun::calendarSyncFinished()
{
    // The event syncs are queued right after this call, before the queue goes on to the first
    // block.
    client_->syncQueue().addOperation([self = shared_from_this()] {
        self->client_->syncQueue().addOperation([self] {
            self->host_.log()->update([&] {
                const std::lock_guard lock(self->mutex_);
                self->areListingsOver_ = true;
            });
        });
    });
}

void SyncRun::eventsAdded(
    const Events& events, const Calendar& calendar, const Account&, const Client&)
{
    store_.save(*calendar, events);
    const std::lock_guard lock(mutex_);
    print("event added", *calendar, events);
    totals_.eventsAdded += events.size();
}

void SyncRun::eventsEdited(
    const Events& events, const Calendar& calendar, const Account&, const Client&)
{
    store_.save(*calendar, events);
    const std::lock_guard lock(mutex_);
    print("event edited", *calendar, events);
    totals_.eventsEdited += events.size();
}

void SyncRun::eventsDeleted(
    const Events& events, const Calendar& calendar, const Account&, const Client&)
{
    const std::lock_guard lock(mutex_);
    for (const auto& event : events)
        states_[calendar->href].stillThere.insert(event->href);
}

void SyncRun::eventsSyncFinished(
    const std::optional<Error>&, const Calendar& calendar, const Client&)
{
    host_.log()->update([&] {
        const std::lock_guard lock(mutex_);
        states_[calendar->href].isFinished = true;
    });
}

void SyncRun::print(const char* change, const MRVCalendar& calendar) const
{
    host_.output().result(std::string(change) + ": " + calendar.displayName,
        {{"change", std::string(change)}, {"calendar", calendar.href},
            {"name", calendar.displayName}});
}

void SyncRun::print(const char* change, const MRVCalendar& calendar, const Events& events) const
{
    for (const auto& event : events) {
        host_.output().result(std::string(change) + ": " + unescaped(event->summary) + " ("
                + calendar.displayName + ")",
            {{"change", std::string(change)}, {"calendar", calendar.href}, {"href", event->href},
                {"uid", event->uid}, {"summary", unescaped(event->summary)}});
    }
}

} // namespace Tessel::App
