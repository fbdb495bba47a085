#include "fuzz/ReadEvents.h"

#include "fuzz/FuzzTarget.h"

#include <cmath>

namespace Tessel::Fuzz {

namespace {

void readOrStop(const std::function<void()>& read)
{
    endsOrStopsFor({"an event of the server has no UID", "an alarm duration "}, read);
}

void requireSound(const MRVEvent& event)
{
    require(event.attendees && event.alarms, "an event without its lists");
    for (const auto& alarm : *event.alarms) {
        if (!alarm->relativeTriggerTime) continue;
        const auto seconds = *alarm->relativeTriggerTime;
        require(std::abs(seconds) < 0x1p63 && seconds == std::trunc(seconds),
            "a trigger is no whole number of seconds");
    }
}

} // namespace

MRVEventsParser::Events eventsOf(const std::string& multistatus)
{
    MRVEventsParser parser(multistatus, nullptr);
    parser.calendar = std::make_shared<MRVCalendar>();
    std::optional<MRVEventsParser::Events> events;
    readOrStop([&] { events = parser.parseEvents(); });
    if (!events) return {};
    require(!events->empty(), "an empty list is none");
    for (const auto& event : *events) {
        require(event->calendar == parser.calendar, "an event of another calendar");
        requireSound(*event);
    }
    return *events;
}

std::shared_ptr<MRVEvent> eventOf(const std::string& calendarData)
{
    std::shared_ptr<MRVEvent> event;
    readOrStop([&] { event = MRVEventsParser::event(calendarData, "\"1\"", "/cal/1.ics"); });
    if (event) requireSound(*event);
    return event;
}

} // namespace Tessel::Fuzz
