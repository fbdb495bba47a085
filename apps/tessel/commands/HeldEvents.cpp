#include "apps/tessel/commands/HeldEvents.h"

#include "apps/tessel/commands/UserTimes.h"

#include <algorithm>

namespace Tessel::App {

namespace {

bool liesIn(const std::string& place, const StoredCalendar& calendar)
{
    const auto folder = calendar.href.ends_with('/') ? calendar.href : calendar.href + "/";
    return place.starts_with(folder);
}

/// Tasks and notes are no events, and nothing is wrong with them.
bool hasNoEvent(const std::string& text)
{
    const auto tree = TextTree::read(text);
    if (!tree) return false;
    bool hasOther = false;
    for (const auto& calendar : tree.value().components()) {
        for (const auto& component : calendar.components()) {
            if (component.is("VEVENT")) return false;
            hasOther |= component.is("VTODO") || component.is("VJOURNAL")
                || component.is("VFREEBUSY") || component.is("VAVAILABILITY");
        }
    }
    return hasOther;
}

} // namespace

HeldEvents::HeldEvents(Workspace& workspace, const std::string& calendar)
    : workspace_(workspace)
    , calendars_(calendar.empty() ? workspace.heldCalendars()
                                  : std::vector {workspace.heldCalendar(calendar)})
    , waiting_(workspace.got(Outbox(workspace.store()).pending()))
{
}

const StoredCalendar* HeldEvents::calendarOf(const std::string& place) const
{
    const auto found = std::find_if(calendars_.begin(), calendars_.end(),
        [&](const auto& calendar) { return liesIn(place, calendar); });
    return found == calendars_.end() ? nullptr : &*found;
}

bool HeldEvents::concernsWaiting(const std::string& place) const
{
    return std::any_of(
        waiting_.begin(), waiting_.end(), [&](const auto& change) { return change.href == place; });
}

std::optional<EventText> HeldEvents::read(const Resource& resource)
{
    auto event = EventText::read(resource.text);
    if (event) return std::move(event).value();
    if (namesFailures_ && !hasNoEvent(resource.text))
        workspace_.leaveOut(resource.href, reasonOf(event.failure()));
    return std::nullopt;
}

void HeldEvents::visit(const Visitor& visitor, const std::optional<Bounds>& range)
{
    visitHeld(visitor, range);
    visitNew(visitor);
}

void HeldEvents::visitHeld(const Visitor& visitor, const std::optional<Bounds>& range)
{
    const auto store = workspace_.store();
    // A change that waits may have moved an event into the calendar, or into the range.
    const bool isWhole = !waiting_.empty();
    const auto held = isWhole ? workspace_.got(store->calendars()) : calendars_;
    for (const auto& calendar : held) {
        const auto take = [&](const Resource& resource) {
            if (!concernsWaiting(resource.href)) {
                if (!calendarOf(resource.href)) return true;
                if (const auto event = read(resource)) visitor({calendar, resource, *event});
                return true;
            }
            // An edit of nothing shows what all that wait will make of it.
            const auto later = Outbox(store).change(resource, {});
            if (!later && later.failure().kind == FailureKind::missing) return true;
            const auto& shown = later ? later.value() : resource;
            const auto* const place = calendarOf(shown.href);
            if (!place) return true;
            if (const auto event = read(shown)) visitor({*place, resource, *event, true});
            return true;
        };
        workspace_.got(range && !isWhole
                ? store->visit(calendar.href, range->first, range->last, take)
                : store->visit(calendar.href, take));
    }
    if (!namesFailures_) return;
    for (const auto& calendar : calendars_) {
        for (const auto& failed : workspace_.got(store->failed(calendar.href)))
            workspace_.leaveOut(failed.href, failed.reason, {{"calendar", nameOf(calendar)}});
    }
}

void HeldEvents::visitNew(const Visitor& visitor)
{
    for (const auto& change : waiting_) {
        if (change.kind != ChangeKind::create) continue;
        const Resource resource {change.href, {}, change.content};
        const auto later = Outbox(workspace_.store()).change(resource, {});
        if (!later) continue;
        const auto* const calendar = calendarOf(later.value().href);
        if (!calendar) continue;
        if (const auto event = read(later.value())) visitor({*calendar, resource, *event, true});
    }
}

HeldEvent HeldEvents::find(const std::string& name)
{
    constexpr std::size_t shortestBegin = 4;
    enum Match { none, summary, begin, exact };
    Match best = none;
    std::vector<HeldEvent> found;
    namesFailures_ = false;
    visit([&](const HeldEvent& held) {
        const auto main = held.event.main();
        const auto uid = main.uid();
        const auto match = uid == name || held.resource.href == name ? exact
            : name.size() >= shortestBegin && uid.starts_with(name)  ? begin
            : main.summary() == name                                 ? summary
                                                                     : none;
        if (match == none || match < best) return;
        if (match > best) found.clear();
        best = match;
        found.push_back(held);
    });
    namesFailures_ = true;
    if (found.empty())
        throw Stop::missing("There is no event " + name
            + ". `tessel events` lists those that are held, `tessel sync` brings new ones.");
    if (found.size() > 1) {
        std::string places;
        for (const auto& each : found)
            places += (places.empty() ? "" : ", ") + each.resource.href;
        throw Stop::usage("Several events are " + name + "; give the place: " + places + ".");
    }
    return found.front();
}

Json describe(const HeldEvent& held)
{
    const auto main = held.event.main();
    const auto start = main.start();
    const auto end = held.event.end(main);
    Json object {{"calendar", nameOf(held.calendar)}, {"href", held.resource.href},
        {"uid", main.uid()}, {"summary", orNull(main.summary())},
        {"start", start ? Json(isoMoment(*start)) : Json(nullptr)},
        {"end", end ? Json(isoMoment(*end)) : Json(nullptr)}};
    if (start && !start->zone.empty()) object["zone"] = start->zone;
    object["isAllDay"] = main.isAllDay();
    object["isSeries"] = held.event.isSeries();
    object["location"] = orNull(main.location());
    object["status"] = orNull(main.status());
    object["isWaiting"] = held.waits;
    return object;
}

} // namespace Tessel::App
