#include "Tessel/Session/Text/EventText.h"

#include "Tessel/Session/Text/EditCheck.h"
#include "Tessel/Session/Text/EventRule.h"
#include "Tessel/Session/Text/EventTimes.h"

namespace Tessel {

namespace {

/// Calls `visit` with every event of the text until it returns true.
template <class Visit> void eachEvent(const TextTree& tree, Visit visit)
{
    for (const auto calendar : tree.components()) {
        for (const auto component : calendar.components())
            if (component.is("VEVENT") && visit(EventPart(component))) return;
    }
}

std::optional<EventPart> mainOf(const TextTree& tree)
{
    std::optional<EventPart> first;
    std::optional<EventPart> master;
    eachEvent(tree, [&](const EventPart& part) {
        if (!first) first = part;
        if (!part.component().line("RECURRENCE-ID")) master = part;
        return master.has_value();
    });
    return master ? master : first;
}

} // namespace

Result<EventText> EventText::read(std::string text)
{
    auto tree = TextTree::read(std::move(text));
    if (!tree) return tree.failure();
    if (!mainOf(tree.value())) return malformedEdit("The calendar text holds no event.");
    return EventText(std::move(tree).value());
}

EventPart EventText::main() const
{
    return *mainOf(tree_);
}

std::vector<EventPart> EventText::overrides() const
{
    std::vector<EventPart> parts;
    eachEvent(tree_, [&](const EventPart& part) {
        if (part.component().line("RECURRENCE-ID")) parts.push_back(part);
        return false;
    });
    return parts;
}

std::optional<EventPart> EventText::overrideOf(const EventMoment& instance) const
{
    const auto master = main();
    TextZones zones(tree_);
    for (const auto& part : overrides()) {
        const auto own = part.recurrenceId();
        if (!own) continue;
        // Without a series there is only its own clock.
        const auto clock = master.recurrenceId() ? *own : master.start().value_or(*own);
        if (keyOf(clock, *own, zones) == keyOf(clock, instance, zones)) return part;
    }
    return std::nullopt;
}

EventPart EventText::part(std::size_t component) const
{
    for (const auto calendar : tree_.components()) {
        for (const auto each : calendar.components())
            if (component-- == 0) return each.is("VEVENT") ? EventPart(each) : main();
    }
    return main();
}

bool EventText::isSeries() const
{
    const auto component = main().component();
    return component.line("RRULE") || component.line("RDATE");
}

std::optional<EventMoment> EventText::end(const EventPart& part) const
{
    TextZones zones(tree_);
    return endOf(part, zones);
}

Date EventText::dateOf(const EventMoment& moment, const TimeZone& here) const
{
    return TextZones(tree_).dateOf(moment, here);
}

} // namespace Tessel
