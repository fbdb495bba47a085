#include "Tessel/icalendar/CGICalendar.h"
#include "fuzz/FuzzTarget.h"

namespace Tessel::Fuzz {

namespace {

std::string lineOf(const CGICalendarProperty& property)
{
    std::string line(property.name().value_or(""));
    for (const auto& parameter : property.parameters)
        line.append(";").append(parameter->string());
    return line.append(":").append(property.value().value_or(""));
}

/// A line of more than 75 characters is folded. That leaves carriage returns in it, which an empty
/// parameter does not survive, and loses its end, maybe with the colon, at some lengths.
void requireSameLine(const CGICalendarProperty& written, const CGICalendarProperty& read)
{
    auto line = lineOf(written);
    auto again = lineOf(read);
    if (line.size() <= 75) return require(line == again, "a line changes: " + line);
    if (!read.name()) return;
    for (auto* text : {&line, &again}) {
        std::erase(*text, '\r');
        for (auto at = text->find(";="); at != text->npos; at = text->find(";=", at))
            text->erase(at, 2);
    }
    require(line.starts_with(again), "a folded line changes: " + line);
}

/// The writer escapes nothing: a name that begins with a blank continues the line before it.
bool canBeWritten(const CGICalendarProperty& property)
{
    const auto name = property.name().value_or("");
    return !name.starts_with(' ') && !name.starts_with('\t');
}

bool canBeWritten(const CGICalendarComponent& component)
{
    for (const auto& property : component.properties)
        if (!canBeWritten(*property)) return false;
    for (const auto& child : component.components)
        if (!canBeWritten(*child)) return false;
    return true;
}

void requireSameTree(const CGICalendarComponent& written, const CGICalendarComponent& read)
{
    require(written.type() == read.type(), "a component changes its type");
    require(written.properties.size() == read.properties.size(), "a property is lost or found");
    for (std::size_t i = 0; i < written.properties.size(); ++i)
        requireSameLine(*written.properties[i], *read.properties[i]);
    require(written.components.size() == read.components.size(), "a component is lost or found");
    for (std::size_t i = 0; i < written.components.size(); ++i)
        requireSameTree(*written.components[i], *read.components[i]);
}

/// Asks for all that a value can be read as.
void readValues(const CGICalendarComponent& component)
{
    for (const auto& property : component.properties) {
        property->integerValue();
        property->floatValue();
        property->dateValue();
        property->participationStatus();
        if (const auto name = property->name()) component.propertyDateForName(*name);
    }
    for (const auto& child : component.components)
        readValues(*child);
}

/// Any bytes are a calendar. What is written for it is read as the same tree, and a node that is
/// kept outlives the tree.
const Target icalendar("icalendar", [](std::string_view input) {
    auto calendar = CGICalendar::initWithString(std::string(input));
    require(calendar->parserStack.empty(), "components are open after the parse");
    const auto text = calendar->description();
    const auto again = CGICalendar::initWithString(text);

    require(again->objects.size() == calendar->objects.size(), "an object is lost or found");
    for (std::size_t i = 0; i < again->objects.size(); ++i) {
        readValues(*calendar->objects[i]);
        if (canBeWritten(*calendar->objects[i]))
            requireSameTree(*calendar->objects[i], *again->objects[i]);
    }

    require(calendar->description() == text, "looking at a calendar changes it");

    const auto kept = calendar->objects.empty() ? nullptr : calendar->objects.back();
    calendar.reset();
    require(!kept || text.ends_with(kept->description()), "a kept object changes");
});

} // namespace

} // namespace Tessel::Fuzz
