#include "apps/tessel/EventChanges.h"

#include "apps/tessel/EventReading.h"

#include <stdexcept>

namespace Tessel::App {

namespace {

/// "2027-01-18T09:30", "20270118T093000" and "2027-01-18" in their iCalendar form.
std::string iCalendarForm(std::string text)
{
    std::erase_if(text, [](char c) { return c == '-' || c == ':'; });
    constexpr std::size_t withoutSeconds = 13;
    return text.size() == withoutSeconds ? text + "00" : text;
}

bool isDay(const std::string& text)
{
    return text.find('T') == std::string::npos;
}

Date read(const std::string& text, const std::optional<TimeZone>& zone)
{
    const auto date = iCalDateTimeIfReadable(iCalendarForm(text), zone);
    if (!date) throw std::runtime_error("not a date or time: " + text);
    return *date;
}

TimeZone zoneNamed(const std::string& name)
{
    const auto zone = TimeZone::withIdentifier(name);
    if (!zone) throw std::runtime_error("there is no time zone " + name);
    return *zone;
}

} // namespace

void EventChanges::addOptions(CLI::App& command)
{
    command.add_option("--summary", summary);
    command.add_option("--description", description);
    command.add_option("--start", start, "such as 2027-01-18T09:30, or 2027-01-18 for a whole day");
    command.add_option("--end", end);
    command.add_option("--timezone", zone, "of start and end");
    command.add_option("--status", status, "TENTATIVE, CONFIRMED or CANCELLED")
        ->check(CLI::IsMember({"TENTATIVE", "CONFIRMED", "CANCELLED"}));
    command.add_option("--rule", rule, "recurrence, such as FREQ=WEEKLY;COUNT=10");
}

bool EventChanges::isEmpty() const
{
    return !summary && !description && !start && !end && !zone && !status && !rule;
}

std::shared_ptr<MRVEvent> EventChanges::applied(const MRVEvent& event,
    const std::shared_ptr<MRVCalendar>& calendar, const std::string& eTag) const
{
    const auto startZone = zone ? std::optional(zoneNamed(*zone)) : event.startTimeZone;
    const auto endZone = zone ? std::optional(zoneNamed(*zone)) : event.endTimeZone;
    const bool allDay = start ? isDay(*start) : event.allDay;
    const auto readingZone
        = [&](const std::optional<TimeZone>& of) { return allDay ? std::nullopt : of; };
    return std::make_shared<MRVEvent>(MRVEvent {
        .uid = event.uid,
        .href = event.href,
        .eTag = eTag,
        .calendarData = event.calendarData,
        .desc = description ? std::optional(escaped(*description)) : event.desc,
        .status = status.value_or(event.status),
        .summary = summary ? escaped(*summary) : event.summary,
        .recurrenceId = event.recurrenceId,
        .createdDate = event.createdDate,
        .startDate = start ? read(*start, readingZone(startZone)) : event.startDate,
        .endDate = end ? read(*end, readingZone(endZone)) : event.endDate,
        .startTimeZone = readingZone(startZone),
        .endTimeZone = readingZone(endZone),
        .attendees = event.attendees,
        .occurrences = event.occurrences,
        .alarms = event.alarms,
        .recurRule = rule ? rule : event.recurRule,
        .calendar = calendar,
        .allDay = allDay,
    });
}

} // namespace Tessel::App
