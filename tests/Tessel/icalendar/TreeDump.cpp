#include "tests/Tessel/icalendar/TreeDump.h"

namespace Tessel {

static std::string shown(std::optional<std::string_view> text)
{
    return std::string(text.value_or("(none)"));
}

static void dump(
    const CGICalendarComponent& component, const std::string& indent, std::string& text)
{
    text += indent + shown(component.type()) + "\n";
    for (const auto& property : component.properties) {
        text += indent + "  " + shown(property->name()) + " = " + shown(property->value()) + "\n";
        for (const auto& parameter : property->parameters) {
            text += indent + "    ; " + shown(parameter->name()) + " = " + shown(parameter->value())
                + "\n";
        }
    }
    for (const auto& child : component.components)
        dump(*child, indent + "  ", text);
}

std::string treeDump(const CGICalendar& calendar)
{
    std::string text;
    for (const auto& object : calendar.objects)
        dump(*object, "", text);
    return text;
}

} // namespace Tessel
