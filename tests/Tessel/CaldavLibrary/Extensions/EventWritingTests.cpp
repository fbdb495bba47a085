#include "Tessel/CaldavLibrary/Parsers/MRVEventsParser.h"
#include "tests/Tessel/CaldavLibrary/Parsers/ModelDump.h"
#include "tests/support/TestHost.h"

#include <gtest/gtest.h>

// What is written for an event that was read is in cases/events.txt.

using namespace Tessel;
using namespace Tessel::Test;

namespace {

constexpr std::int64_t january2 = 1704153600; // 2024-01-02T00:00:00Z
constexpr std::int64_t hour = 3600;
const auto berlin = TimeZone::withIdentifier("Europe/Berlin");

struct Values {
    std::optional<std::string> desc = "";
    std::string summary = "Talk";
    std::int64_t start = january2 + 8 * hour;
    std::optional<TimeZone> startZone = berlin;
    std::optional<TimeZone> endZone = startZone;
    bool allDay = false;
};

MRVEvent eventOf(const Values& values)
{
    return {
        .uid = "u1",
        .href = "/cal/u1.ics",
        .eTag = "\"1\"",
        .calendarData = "",
        .desc = values.desc,
        .status = "CONFIRMED",
        .summary = values.summary,
        .startDate = Date::fromSecondsSince1970(values.start),
        .endDate = Date::fromSecondsSince1970(values.start + hour),
        .startTimeZone = values.startZone,
        .endTimeZone = values.endZone,
        .calendar = calendarAt("/cal/", knownAccount()),
        .allDay = values.allDay,
    };
}

void expectLine(const MRVEvent& event, const std::string& line)
{
    const auto text = event.iCalendarString().value();
    EXPECT_NE(text.find("\n" + line + "\n"), text.npos) << "no line " << line << " in " << text;
}

std::shared_ptr<MRVEvent> readBack(const MRVEvent& event)
{
    return MRVEventsParser::event(event.iCalendarString().value(), event.eTag, event.href);
}

} // namespace

TEST(EventWriting, WritesOverriddenInstancesAfterTheirMaster)
{
    auto event = eventOf({});
    event.recurRule = "FREQ=DAILY";
    event.occurrences
        = {{std::make_shared<MRVEvent>(eventOf({.desc = std::nullopt, .summary = "Moved"})),
            std::make_shared<MRVEvent>(eventOf({.summary = "In UTC", .startZone = {}}))}};
    event.occurrences->front()->recurrenceId = "20240103T090000";
    const auto text = event.iCalendarString().value();
    const auto moved = text.find("DESCRIPTION:\nSUMMARY:Moved\nUID:u1\n", text.find("RRULE:"));
    ASSERT_NE(moved, text.npos);
    EXPECT_NE(text.find("DTSTART:20240102T080000Z\n", moved), text.npos);
    EXPECT_EQ(text.find("RECURRENCE-ID"), text.npos);
    EXPECT_EQ(text.find("BEGIN:VTIMEZONE", moved), text.npos);
}

TEST(EventWriting, WritesTheDayOfItsZone)
{
    // In Berlin the day has begun an hour before.
    expectLine(eventOf({.start = january2 - hour, .allDay = true}), "DTSTART;VALUE=DATE:20240102");
}

TEST(EventWriting, WritesAZoneWithoutDefinitionByNameOnly)
{
    const auto custom = TimeZone::fromVTimeZone(
        "BEGIN:VTIMEZONE\r\nTZID:Own/Nowhere\r\nBEGIN:STANDARD\r\nDTSTART:19700101T000000\r\n"
        "TZOFFSETFROM:+0300\r\nTZOFFSETTO:+0300\r\nEND:STANDARD\r\nEND:VTIMEZONE\r\n",
        "Own/Nowhere");
    const auto event = eventOf({.startZone = custom.value()});
    EXPECT_EQ(event.iCalendarString()->find("VTIMEZONE"), std::string::npos);
    expectLine(event, "DTSTART;TZID=Own/Nowhere:20240102T110000");
}

TEST(EventWriting, WritesWhatTheParserReadsBack)
{
    const auto desc = "Long enough to be folded: " + std::string(200, 'x') + " \xC3\xA4";
    auto event = eventOf({.desc = desc,
        .summary = "S\\, \xF0\x9F\x8E\x89",
        .endZone = TimeZone::withIdentifier("Europe/London")});
    event.recurRule = "FREQ=WEEKLY;BYDAY=MO";
    event.attendees.emplace();
    event.alarms.emplace();
    for (const double offset : {-900, 900, -604800, -90061}) {
        event.alarms->push_back(
            std::make_shared<MRVAlarm>(MRVAlarm {.desc = "", .relativeTriggerTime = offset}));
    }
    auto read = dump(*readBack(event));
    std::erase(read, '\r'); // every fold leaves one in the value
    EXPECT_EQ(read, dump(event));
}
