#include "Tessel/icalendar/CGICalendarComponent.h"

#include "Tessel/Platform/Foundation/Text/UUID.h"
#include "Tessel/icalendar/NamedNodes.h"

#include <stdexcept>

namespace Tessel {

namespace {

struct OpenComponent {
    const CGICalendarComponent* component;
    std::size_t nextChild = 0;
};

std::shared_ptr<CGICalendarComponent> identified(std::string_view type, const Date& now)
{
    auto component = std::make_shared<CGICalendarComponent>(type);
    component->setUID(makeUUID());
    component->setDateTimeStamp(now);
    return component;
}

void appendBoundary(
    std::string& text, std::string_view keyword, const CGICalendarComponent& component)
{
    text.append(keyword).append(component.type().value_or("(null)")).push_back('\n');
}

void appendHead(std::string& text, const CGICalendarComponent& component)
{
    appendBoundary(text, "BEGIN:", component);
    component.properties.walk(
        [&](const auto& property) {
            if (property) property->appendDescription(text);
        },
        [&](std::size_t blanks) {
            for (; blanks > 0; --blanks)
                text.append(":\n");
        });
}

} // namespace

CGICalendarComponent::~CGICalendarComponent()
{
    // Children that only this tree holds are freed from a list, not from within one another: text
    // may nest them deeper than the stack is.
    auto doomed = std::move(components);
    while (!doomed.empty()) {
        const auto component = std::move(doomed.back());
        doomed.pop_back();
        if (component.use_count() != 1) continue;
        auto& children = component->components;
        doomed.insert(
            doomed.end(), std::move_iterator(children.begin()), std::move_iterator(children.end()));
        children.clear();
    }
}

std::shared_ptr<CGICalendarComponent> CGICalendarComponent::componentWithType(std::string_view type)
{
    return std::make_shared<CGICalendarComponent>(type);
}

std::shared_ptr<CGICalendarComponent> CGICalendarComponent::event()
{
    auto component = identified("VEVENT", Date());
    component->setSequenceNumber(0);
    return component;
}

std::shared_ptr<CGICalendarComponent> CGICalendarComponent::todo()
{
    const Date now;
    auto component = identified("VTODO", now);
    component->setSequenceNumber(0);
    component->setCreated(now);
    return component;
}

std::shared_ptr<CGICalendarComponent> CGICalendarComponent::journal()
{
    auto component = identified("VJOURNAL", Date());
    component->setSequenceNumber(0);
    return component;
}

std::shared_ptr<CGICalendarComponent> CGICalendarComponent::freebusy()
{
    return identified("VFREEBUSY", Date());
}

std::shared_ptr<CGICalendarComponent> CGICalendarComponent::timezone()
{
    return componentWithType("VTIMEZONE");
}

std::shared_ptr<CGICalendarComponent> CGICalendarComponent::alarm()
{
    return componentWithType("VALARM");
}

void CGICalendarComponent::addComponent(std::shared_ptr<CGICalendarComponent> component)
{
    components.push_back(std::move(component));
}

void CGICalendarComponent::insertComponent(
    std::shared_ptr<CGICalendarComponent> component, std::size_t index)
{
    if (index > components.size()) throw std::out_of_range("insertComponent");
    components.insert(components.begin() + std::ptrdiff_t(index), std::move(component));
}

std::shared_ptr<CGICalendarComponent> CGICalendarComponent::componentAtIndex(
    std::size_t index) const
{
    return components.at(index);
}

std::optional<std::size_t> CGICalendarComponent::indexOfComponent(
    const CGICalendarComponent& component) const
{
    for (std::size_t i = 0; i < components.size(); ++i) {
        if (components[i].get() == &component) return i;
    }
    return std::nullopt;
}

void CGICalendarComponent::removeComponent(const CGICalendarComponent& component)
{
    std::erase_if(components, [&](const auto& child) { return child.get() == &component; });
}

void CGICalendarComponent::removeComponentAtIndex(std::size_t index)
{
    if (index >= components.size()) throw std::out_of_range("removeComponentAtIndex");
    components.erase(components.begin() + std::ptrdiff_t(index));
}

void CGICalendarComponent::addProperty(std::shared_ptr<CGICalendarProperty> property)
{
    properties.push_back(std::move(property));
}

std::shared_ptr<CGICalendarProperty> CGICalendarComponent::propertyAtIndex(std::size_t index) const
{
    return properties.at(index);
}

std::shared_ptr<CGICalendarProperty> CGICalendarComponent::propertyForName(
    std::string_view name) const
{
    const auto found = findNamed(properties.filled(), name);
    return found == properties.filled().end() ? nullptr : *found;
}

std::vector<std::optional<std::string>> CGICalendarComponent::allPropertyKeys() const
{
    return allNames(properties);
}

std::optional<std::string_view> CGICalendarComponent::propertyValueForName(
    std::string_view name) const
{
    const auto* const property = firstNamed(properties.filled(), name);
    return property ? property->value() : std::nullopt;
}

std::optional<Date> CGICalendarComponent::propertyDateForName(std::string_view name) const
{
    const auto* const property = firstNamed(properties.filled(), name);
    return property ? property->dateValue() : std::nullopt;
}

std::int64_t CGICalendarComponent::propertyIntegerForName(std::string_view name) const
{
    const auto* const property = firstNamed(properties.filled(), name);
    return property ? property->integerValue() : 0;
}

float CGICalendarComponent::propertyFloatForName(std::string_view name) const
{
    const auto* const property = firstNamed(properties.filled(), name);
    return property ? property->floatValue() : 0;
}

void CGICalendarComponent::removePropertyForName(std::string_view name)
{
    removeNamed(properties, name);
}

bool CGICalendarComponent::hasPropertyForName(std::string_view name)
{
    return removeNamed(properties, name);
}

void CGICalendarComponent::setPropertyValue(std::optional<std::string_view> value,
    std::string_view name, const Texts& parameterValues, const Texts& parameterNames)
{
    auto& property = firstNamedOrNew(properties, name);
    property.setValue(value);
    if (parameterValues.size() != parameterNames.size()) return;
    for (std::size_t i = 0; i < parameterNames.size(); ++i) {
        property.setParameterObject(parameterValues[i], parameterNames[i]);
    }
}

void CGICalendarComponent::setPropertyDate(const Date& date, std::string_view name,
    const Texts& parameterValues, const Texts& parameterNames)
{
    setPropertyValue(descriptionICalendar(date), name, parameterValues, parameterNames);
}

void CGICalendarComponent::setPropertyInteger(std::int64_t number, std::string_view name,
    const Texts& parameterValues, const Texts& parameterNames)
{
    setPropertyObject(number, name, parameterValues, parameterNames);
}

void CGICalendarComponent::setPropertyFloat(
    float number, std::string_view name, const Texts& parameterValues, const Texts& parameterNames)
{
    setPropertyObject(number, name, parameterValues, parameterNames);
}

void CGICalendarComponent::incrementSequenceNumber()
{
    const auto number = sequenceNumber();
    if (number != INT64_MAX) setSequenceNumber(number + 1);
}

std::int64_t CGICalendarComponent::participationStatus() const
{
    const auto property = propertyForName("PARTSTAT");
    return property ? property->participationStatus() : 0;
}

void CGICalendarComponent::setParticipationStatus(std::int64_t index)
{
    if (const auto property = propertyForName("PARTSTAT")) property->setParticipationStatus(index);
}

void CGICalendarComponent::appendDescription(std::string& text) const
{
    // An explicit stack: components may nest deeper than the thread's stack is.
    std::vector<OpenComponent> open {{this}};
    appendHead(text, *this);
    while (!open.empty()) {
        auto& [component, nextChild] = open.back();
        if (nextChild == component->components.size()) {
            appendBoundary(text, "END:", *component);
            open.pop_back();
            continue;
        }
        const auto* const child = component->components[nextChild++].get();
        if (!child) continue;
        appendHead(text, *child);
        open.push_back({child});
    }
}

std::string CGICalendarComponent::description() const
{
    std::string text;
    appendDescription(text);
    return text;
}

} // namespace Tessel
