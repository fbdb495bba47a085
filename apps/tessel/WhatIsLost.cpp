#include "apps/tessel/WhatIsLost.h"

#include "apps/tessel/EventReading.h"

#include <algorithm>
#include <map>
#include <optional>
#include <set>
#include <stdexcept>

namespace Tessel::App {

namespace {

/// The properties of a text by component and name, each with its parameters and value.
using Properties = std::map<std::string, std::multiset<std::string>>;

constexpr int mostDepth = 100; // of components in components

bool isRewritten(std::string_view name)
{
    return name == "PRODID" || name == "VERSION" || name == "DTSTAMP" || name == "LAST-MODIFIED"
        || name == "CALSCALE";
}

/// Their values are compared as dates, or written in another form.
bool isCompareByParameters(std::string_view name)
{
    return name == "DTSTART" || name == "DTEND" || name == "TRIGGER";
}

void collect(const CGICalendarComponent& component, const std::string& path, Properties& found,
    int depth = 0)
{
    if (depth > mostDepth) throw std::runtime_error("components are nested too deep");
    for (const auto& property : component.properties.filled()) {
        const std::string name(property->name().value_or(""));
        if (name.empty() || isRewritten(name)) continue;
        std::multiset<std::string> parameters;
        for (const auto& parameter : property->parameters.filled()) {
            // A relative trigger is one with or without saying so, and the address of a participant
            // is written in the value.
            const bool isImplied
                = parameter->string() == "VALUE=DURATION" || parameter->isName("EMAIL");
            if (!isImplied) parameters.insert(parameter->string());
        }
        std::string text;
        for (const auto& parameter : parameters)
            text += parameter + ";";
        if (!isCompareByParameters(name))
            text.append(1, ':').append(property->value().value_or(""));
        std::erase(text, '\r');
        found[path + name].insert(text);
    }
    for (const auto& child : component.components) {
        if (child->isTimezone()) continue;
        const bool isPlain = path.empty() && child->isEvent();
        collect(*child, isPlain ? path : path + std::string(child->type().value_or("")) + " ",
            found, depth + 1);
    }
}

Properties properties(const std::string& text)
{
    Properties found;
    const auto calendar = CGICalendar::initWithString(text);
    for (const auto& object : calendar->objects)
        collect(*object, "", found);
    return found;
}

} // namespace

std::vector<std::string> whatIsLost(const std::string& original, const MRVEvent& event)
{
    const auto written = properties(event.iCalendarString().value_or(""));
    std::vector<std::string> lost;
    for (const auto& [name, texts] : properties(original)) {
        const auto found = written.find(name);
        if (found == written.end()) {
            lost.push_back(name);
        } else if (!std::includes(
                       found->second.begin(), found->second.end(), texts.begin(), texts.end())) {
            lost.push_back(name + " (parameters or value)");
        }
    }
    return lost;
}

std::vector<std::string> whatIsDamaged(const MRVEvent& event)
{
    const auto again = readEvent(event.iCalendarString().value_or(""), event.calendar);
    if (!again) return {"the event"};
    std::vector<std::string> damaged;
    const auto compare = [&](const char* name, bool isSame) {
        if (!isSame) damaged.emplace_back(name);
    };
    compare("DTSTART", again->startDate == event.startDate);
    compare("DTEND", again->endDate == event.endDate);
    compare("SUMMARY", unescaped(again->summary) == unescaped(event.summary));
    compare(
        "DESCRIPTION", unescaped(again->desc.value_or("")) == unescaped(event.desc.value_or("")));
    for (const auto& alarm : event.alarms.value_or(std::vector<std::shared_ptr<MRVAlarm>> {})) {
        compare("VALARM TRIGGER", alarm->relativeTriggerTime.value_or(-1) >= 0);
    }
    compare("RRULE", again->recurRule.value_or("") == event.recurRule.value_or(""));
    return damaged;
}

} // namespace Tessel::App
