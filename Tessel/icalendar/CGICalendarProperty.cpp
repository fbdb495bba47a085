#include "Tessel/icalendar/CGICalendarProperty.h"

#include "Tessel/icalendar/LineFolding.h"
#include "Tessel/icalendar/NamedNodes.h"

namespace Tessel {

void CGICalendarProperty::addParameter(std::shared_ptr<CGICalendarParameter> parameter)
{
    parameters.push_back(std::move(parameter));
}

std::shared_ptr<CGICalendarParameter> CGICalendarProperty::parameterAtIndex(std::size_t index) const
{
    return parameters.at(index);
}

std::shared_ptr<CGICalendarParameter> CGICalendarProperty::parameterForName(
    std::string_view name) const
{
    const auto found = findNamed(parameters.filled(), name);
    return found == parameters.filled().end() ? nullptr : *found;
}

std::vector<std::optional<std::string>> CGICalendarProperty::allParameterKeys() const
{
    return allNames(parameters);
}

std::optional<std::string_view> CGICalendarProperty::parameterValueForName(
    std::string_view name) const
{
    const auto* const parameter = firstNamed(parameters.filled(), name);
    return parameter ? parameter->value() : std::nullopt;
}

std::optional<Date> CGICalendarProperty::parameterDateForName(std::string_view name) const
{
    const auto* const parameter = firstNamed(parameters.filled(), name);
    return parameter ? parameter->dateValue() : std::nullopt;
}

std::int64_t CGICalendarProperty::parameterIntegerForName(std::string_view name) const
{
    const auto* const parameter = firstNamed(parameters.filled(), name);
    return parameter ? parameter->integerValue() : 0;
}

float CGICalendarProperty::parameterFloatForName(std::string_view name) const
{
    const auto* const parameter = firstNamed(parameters.filled(), name);
    return parameter ? parameter->floatValue() : 0;
}

void CGICalendarProperty::setParameterValue(
    std::optional<std::string_view> value, std::string_view name)
{
    firstNamedOrNew(parameters, name).setValue(value);
}

void CGICalendarProperty::setParameterDate(const Date& date, std::string_view name)
{
    setParameterValue(descriptionICalendar(date), name);
}

void CGICalendarProperty::setParameterInteger(std::int64_t number, std::string_view name)
{
    setParameterObject(number, name);
}

void CGICalendarProperty::setParameterFloat(float number, std::string_view name)
{
    setParameterObject(number, name);
}

bool CGICalendarProperty::hasParameterForName(std::string_view name)
{
    return removeNamed(parameters, name);
}

void CGICalendarProperty::removeParameterForName(std::string_view name)
{
    removeNamed(parameters, name);
}

const std::array<std::string_view, 8>& CGICalendarProperty::participationStatusStrings()
{
    static constexpr std::array<std::string_view, 8> table {"", "NEEDS-ACTION", "ACCEPTED",
        "DECLINED", "TENTATIVE", "DELEGATED", "COMPLETED", "IN-PROCESS"};
    return table;
}

void CGICalendarProperty::setParticipationStatus(std::int64_t index)
{
    const auto& table = participationStatusStrings();
    if (index < 0 || index >= std::int64_t(table.size())) return;
    setValue(table[std::size_t(index)]);
}

std::int64_t CGICalendarProperty::participationStatus() const
{
    const auto& table = participationStatusStrings();
    const auto found = std::find(table.begin(), table.end(), valueOrEmpty());
    return found == table.end() ? 0 : found - table.begin();
}

std::string CGICalendarProperty::foldPropertyLine(std::string_view line)
{
    std::string text;
    appendFolded(text, line);
    return text;
}

void CGICalendarProperty::appendLine(std::string& text) const
{
    text.append(nameOrEmpty());
    parameters.walk(
        [&](const auto& parameter) {
            if (!parameter) return;
            text.push_back(';');
            parameter->appendString(text);
        },
        [&](std::size_t blanks) {
            for (; blanks > 0; --blanks)
                text.append(";=");
        });
    text.push_back(':');
    text.append(valueOrEmpty());
}

void CGICalendarProperty::appendDescription(std::string& text) const
{
    const auto start = text.size();
    appendLine(text);
    foldTail(text, start);
    text.push_back('\n');
}

std::string CGICalendarProperty::description() const
{
    std::string text;
    appendDescription(text);
    return text;
}

} // namespace Tessel
