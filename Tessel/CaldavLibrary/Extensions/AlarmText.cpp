#include "Tessel/CaldavLibrary/Extensions/AlarmText.h"

#include "Tessel/CaldavLibrary/Extensions/DateExtension.h"
#include "Tessel/Platform/Foundation/Base/FatalError.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <string>
#include <utility>

namespace Tessel::AlarmText {

namespace {

/// The non-empty pieces between the separators.
template <class IsSeparator>
std::vector<std::string_view> pieces(std::string_view text, IsSeparator isSeparator)
{
    std::vector<std::string_view> found;
    std::size_t start = 0;
    for (std::size_t i = 0; i <= text.size(); ++i) {
        if (i < text.size() && !isSeparator(text[i])) continue;
        if (i > start) found.push_back(text.substr(start, i - start));
        start = i + 1;
    }
    return found;
}

double number(std::string_view piece)
{
    double value = 0;
    const auto end = piece.data() + piece.size();
    const auto [stopped, error] = std::from_chars(piece.data(), end, value);
    if (error != std::errc() || stopped != end || !std::isfinite(value)) {
        fatalError("an alarm duration holds no number: " + std::string(piece));
    }
    return value;
}

/// No more than can be written again: what is longer is the longest.
double wholeSecondsRead(double seconds)
{
    static const double longest = std::nextafter(0x1p63, 0);
    return std::clamp(std::trunc(seconds), -longest, longest);
}

double factor(std::string_view unit)
{
    if (unit == "W") return 604800;
    if (unit == "D") return 86400;
    if (unit == "H") return 3600;
    if (unit == "M") return 60;
    return 1;
}

void readTrigger(const CGICalendarProperty& trigger, MRVAlarm& alarm)
{
    const auto value = trigger.value().value_or(std::string_view());
    const auto readAbsolute
        = [&] { alarm.absoluteTriggerTime = iCalDateTimeIfReadable(value, std::nullopt); };
    const auto readRelative = [&] { alarm.relativeTriggerTime = duration(value); };

    if (trigger.parameters.empty()) {
        return value.find('P') == std::string_view::npos ? readAbsolute() : readRelative();
    }
    for (const auto& parameter : trigger.parameters.filled()) {
        if (!parameter->isName("VALUE")) continue;
        if (parameter->isValue("DATE-TIME")) readAbsolute();
        if (parameter->isValue("DURATION")) readRelative();
    }
}

std::shared_ptr<MRVAlarm> alarm(const CGICalendarComponent& valarm)
{
    auto alarm = std::make_shared<MRVAlarm>();
    for (const auto& property : valarm.properties.filled()) {
        if (property->isName("ACTION")) {
            if (property->isValue("AUDIO")) alarm->action = MRVAlarmAction::audio;
            if (property->isValue("DISPLAY")) alarm->action = MRVAlarmAction::display;
            if (property->isValue("EMAIL")) alarm->action = MRVAlarmAction::email;
        } else if (property->isName("DESCRIPTION")) {
            alarm->desc = property->value().value_or(std::string_view());
        } else if (property->isName("TRIGGER")) {
            readTrigger(*property, *alarm);
        }
    }
    return alarm;
}

/// Truncated toward zero.
std::int64_t wholeSecondsWritten(double offset)
{
    constexpr double limit = 0x1p63;
    const bool fits = offset >= -limit && offset < limit;
    if (!fits) fatalError("the offset of an alarm is no whole number of seconds");
    return static_cast<std::int64_t>(offset);
}

std::string durationText(double offset)
{
    constexpr std::int64_t week = 604800;
    auto seconds = wholeSecondsWritten(offset);
    std::string text = offset > 0 ? "+P" : "-P";
    if (seconds % week == 0) return text + std::to_string(seconds / week) + "W";

    constexpr std::pair<std::int64_t, const char*> units[]
        = {{86400, "DT"}, {3600, "H"}, {60, "M"}, {1, "S"}};
    for (const auto& [unit, designator] : units) {
        text += std::to_string(seconds / unit) + designator;
        seconds %= unit;
    }
    return text;
}

std::optional<std::string> triggerText(const MRVAlarm& alarm, const std::optional<TimeZone>& zone)
{
    if (alarm.absoluteTriggerTime) {
        return descriptionICalDateTimeFormat(*alarm.absoluteTriggerTime, zone);
    }
    if (alarm.relativeTriggerTime) return durationText(*alarm.relativeTriggerTime);
    return std::nullopt;
}

} // namespace

std::vector<std::shared_ptr<MRVAlarm>> alarms(const CGICalendarComponent& vevent)
{
    std::vector<std::shared_ptr<MRVAlarm>> found;
    for (const auto& component : vevent.components) {
        if (component->isAlarm()) found.push_back(alarm(*component));
    }
    return found;
}

double duration(std::string_view text)
{
    const auto numbers
        = pieces(text, [](char c) { return (c >= 'A' && c <= 'Z') || c == '+' || c == '-'; });
    const auto units = pieces(text, [](char c) {
        return (c >= '0' && c <= '9') || c == '+' || c == '-' || c == 'P' || c == 'T';
    });
    if (numbers.size() > units.size()) {
        fatalError("an alarm duration has a number without a unit: " + std::string(text));
    }
    double sum = 0;
    for (std::size_t i = 0; i < numbers.size(); ++i) {
        sum = wholeSecondsRead(sum + wholeSecondsRead(number(numbers[i]) * factor(units[i])));
    }
    return text.starts_with('-') ? -sum : sum;
}

std::shared_ptr<CGICalendarComponent> VALARM(
    const MRVAlarm& alarm, const std::optional<TimeZone>& zone)
{
    auto valarm = CGICalendarComponent::componentWithType("VALARM");
    valarm->setPropertyValue(alarm.desc, "DESCRIPTION");
    if (alarm.action == MRVAlarmAction::display) valarm->setPropertyValue("DISPLAY", "ACTION");
    valarm->setPropertyValue(triggerText(alarm, zone), "TRIGGER");
    return valarm;
}

} // namespace Tessel::AlarmText
