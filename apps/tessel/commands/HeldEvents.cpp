#include "apps/tessel/commands/HeldEvents.h"

#include "apps/tessel/commands/CaseFolding.h"
#include "apps/tessel/commands/EventTitle.h"
#include "apps/tessel/commands/UserTimes.h"
#include "apps/tessel/output/Wording.h"

namespace Tessel::App {

namespace {

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
    , view_(workspace.got(OutboxView::of(workspace.store())))
{
}

std::optional<EventText> HeldEvents::read(const ExpectedResource& expected)
{
    auto event = EventText::read(expected.text);
    if (event) return std::move(event).value();
    if (namesFailures_ && !hasNoEvent(expected.text))
        workspace_.leaveOut(expected.place, reasonOf(event.failure()));
    return std::nullopt;
}

void HeldEvents::visit(const Visitor& visitor, const std::optional<Bounds>& range)
{
    for (const auto& calendar : calendars_) {
        const auto take = [&](const ExpectedResource& expected) {
            if (const auto event = read(expected))
                visitor({calendar, expected.resource, *event, expected.waits});
            return true;
        };
        workspace_.got(range ? view_.visit(calendar.href, range->first, range->last, take)
                             : view_.visit(calendar.href, take));
        if (!namesFailures_) continue;
        for (const auto& failed : workspace_.got(workspace_.store()->failed(calendar.href)))
            workspace_.leaveOut(failed.href, failed.reason, {{"calendar", nameOf(calendar)}});
    }
}

HeldEvent HeldEvents::find(const std::string& name, Naming naming)
{
    constexpr std::size_t shortestBegin = 4;
    const bool allowsBegin = naming == Naming::orBegin && name.size() >= shortestBegin;
    std::optional<HeldEvent> there;
    std::vector<HeldEvent> named;
    std::vector<HeldEvent> begun;
    std::vector<HeldEvent> alike;
    const auto folded = foldedCase(name);
    bool isUid = false;
    namesFailures_ = false;
    visit([&](const HeldEvent& held) {
        const auto main = held.event.main();
        const auto uid = main.uid();
        const auto summary = main.summary();
        const auto foldedUid = foldedCase(uid);
        isUid |= uid == name;
        if (held.resource.href == name) {
            there = held;
        } else if (uid == name || summary == name) {
            named.push_back(held);
        } else if (allowsBegin && uid.starts_with(name)) {
            begun.push_back(held);
        } else if (foldedUid == folded || (summary && foldedCase(*summary) == folded)
            || (allowsBegin && foldedUid.starts_with(folded))) {
            alike.push_back(held);
        }
    });
    namesFailures_ = true;
    if (there) return *there;
    const bool isNamed = !named.empty();
    if (!isUid) named.insert(named.end(), begun.begin(), begun.end());
    if (!isNamed) named.insert(named.end(), alike.begin(), alike.end());
    if (named.empty())
        throw Stop::missing("There is no event " + name
            + ". `tessel events` lists those that are held, `tessel sync` brings new ones.");
    if (named.size() > 1) {
        std::vector<std::string> places;
        for (const auto& each : named)
            places.push_back(
                each.resource.href + " (" + titleOf(each.event.main(), "no summary") + ")");
        throw Stop::usage(
            "Several events are " + name + "; give the place: " + joined(places) + ".");
    }
    return named.front();
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
