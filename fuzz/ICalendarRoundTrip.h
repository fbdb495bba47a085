#pragma once

#include "Tessel/icalendar/CGICalendar.h"

#include <string>
#include <string_view>

namespace Tessel {

/// Reads any bytes, writes the tree, reads that and writes again, while a node of the first tree
/// outlives it. Returns what was wrong, or nothing.
inline std::string iCalendarRoundTripFault(std::string_view bytes)
{
    auto calendar = CGICalendar::initWithString(std::string(bytes));
    if (!calendar->parserStack.empty()) return "components are open after the parse";
    const auto text = calendar->description();

    const auto again = CGICalendar::initWithString(text);
    const auto objects = calendar->objects.size();
    if (again->objects.size() < objects) return "an object is lost";
    const auto kept = calendar->objects.empty() ? nullptr : calendar->objects.back();
    calendar.reset();
    if (kept && !text.ends_with(kept->description())) return "a kept object changed";

    for (const auto& object : again->objects) {
        for (const auto& property : object->properties) {
            property->integerValue();
            property->floatValue();
            property->dateValue();
        }
    }
    return {};
}

} // namespace Tessel
