#include "CaldavLibrary/Models/MRVEvent.h"
#include "CaldavLibrary/Parsers/MRVEventsParser.h"
#include "Platform/XML/GDataXMLElement.h"
#include "support/TestHost.h"

#include <gtest/gtest.h>

#include <limits>

using namespace Tessel;
using namespace Tessel::Test;

namespace {

constexpr std::int64_t january2 = 1704153600; // 2024-01-02T00:00:00Z
constexpr std::int64_t hour = 3600;

struct Values {
    std::optional<std::string> desc = "What to say";
    std::string summary = "Talk";
    std::int64_t start = january2 + 8 * hour;
    std::int64_t end = january2 + 9 * hour;
    std::optional<std::string> startZone = "Europe/Berlin";
    std::optional<std::string> endZone = startZone;
    bool allDay = false;
};

std::optional<TimeZone> zone(const std::optional<std::string>& identifier)
{
    if (!identifier) return std::nullopt;
    return TimeZone::withIdentifier(*identifier);
}

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
        .createdDate = Date::fromSecondsSince1970(january2),
        .lastModifiedDate = Date::fromSecondsSince1970(january2 + 60),
        .startDate = Date::fromSecondsSince1970(values.start),
        .endDate = Date::fromSecondsSince1970(values.end),
        .startTimeZone = zone(values.startZone),
        .endTimeZone = zone(values.endZone),
        .calendar = calendarAt("/cal/", knownAccount()),
        .allDay = values.allDay,
    };
}

std::string textOf(const Values& values)
{
    return eventOf(values).iCalendarString().value();
}

/// The text without its time-zone blocks.
std::string withoutZones(std::string text)
{
    const auto begin = text.find("BEGIN:VTIMEZONE\n");
    const std::string last = "END:VTIMEZONE\n";
    if (begin != text.npos) text.erase(begin, text.rfind(last) + last.size() - begin);
    return text;
}

/// The TZIDs that the text defines, in order.
std::vector<std::string> definedZones(const std::string& text)
{
    std::vector<std::string> zones;
    for (auto at = text.find("\nTZID:"); at != text.npos; at = text.find("\nTZID:", at + 1)) {
        zones.push_back(text.substr(at + 6, text.find_first_of("\r\n", at + 6) - at - 6));
    }
    return zones;
}

void expectLine(const std::string& text, const std::string& line)
{
    EXPECT_NE(text.find("\n" + line + "\n"), text.npos) << "no line " << line << " in " << text;
}

std::string trigger(const MRVAlarm& alarm, const Values& values = {})
{
    auto event = eventOf(values);
    event.alarms = {{std::make_shared<MRVAlarm>(alarm)}};
    const auto text = event.iCalendarString().value();
    const auto at = text.find("TRIGGER") + 7;
    return text.substr(at, text.find('\n', at) - at);
}

std::string durationOf(double seconds)
{
    return trigger({.desc = "", .relativeTriggerTime = seconds});
}

std::shared_ptr<MRVEvent> readBack(const MRVEvent& event)
{
    auto multistatus = GDataXMLElement::elementWithName("multistatus", "DAV:");
    auto response = multistatus.addElement("response", "DAV:");
    response.addElement("href", "DAV:", event.href);
    auto propstat = response.addElement("propstat", "DAV:");
    auto prop = propstat.addElement("prop", "DAV:");
    prop.addElement("getetag", "DAV:", event.eTag);
    prop.addElement("calendar-data", "urn:ietf:params:xml:ns:caldav", *event.iCalendarString());
    propstat.addElement("status", "DAV:", "HTTP/1.1 200 OK");
    MRVEventsParser parser(multistatus.XMLString(), event.calendar->account);
    parser.calendar = event.calendar;
    return parser.parseEvents().value().at(0);
}

} // namespace

TEST(EventSerialiser, WritesTimedEventsInAFixedOrder)
{
    auto event = eventOf({});
    event.recurRule = "FREQ=DAILY;COUNT=2";
    event.attendees = {{
        std::make_shared<MRVAttendee>(MRVAttendee {.email = "a@x",
            .role = "organizer",
            .cn = "A",
            .href = "mailto:a@x",
            .isOrganizer = true}),
        std::make_shared<MRVAttendee>(MRVAttendee {.email = "b@x",
            .role = "REQ-PARTICIPANT",
            .type = "INDIVIDUAL",
            .participationStatus = "ACCEPTED",
            .scheduleStatus = "1.2",
            .cn = "B",
            .href = "mailto:b@x"}),
        std::make_shared<MRVAttendee>(
            MRVAttendee {.email = "c@x", .role = "CHAIR", .cn = "", .href = ""}),
    }};
    event.alarms = {{
        std::make_shared<MRVAlarm>(MRVAlarm {.desc = "Soon", .relativeTriggerTime = -900}),
        std::make_shared<MRVAlarm>(
            MRVAlarm {.desc = "Mail", .relativeTriggerTime = 900, .action = MRVAlarmAction::email}),
    }};
    auto instance = std::make_shared<MRVEvent>(eventOf({.desc = std::nullopt}));
    instance->recurrenceId = "20240103T090000";
    event.occurrences = {{instance}};

    const auto text = event.iCalendarString().value();
    EXPECT_TRUE(text.starts_with("BEGIN:VCALENDAR\nVERSION:2.0\nPRODID:-//Morv//Caldav//EN\n"
                                 "BEGIN:VTIMEZONE\n"));
    EXPECT_EQ(definedZones(text), std::vector<std::string> {"Europe/Berlin"});
    EXPECT_EQ(withoutZones(text),
        "BEGIN:VCALENDAR\n"
        "VERSION:2.0\n"
        "PRODID:-//Morv//Caldav//EN\n"
        "BEGIN:VEVENT\n"
        "DTSTART;TZID=Europe/Berlin:20240102T090000\n"
        "DTEND;TZID=Europe/Berlin:20240102T100000\n"
        "DESCRIPTION:What to say\n"
        "SUMMARY:Talk\n"
        "UID:u1\n"
        "DTSTAMP:20240102T240000Z\n"
        "LAST-MODIFIED:20240102T240100Z\n"
        "RRULE:FREQ=DAILY;COUNT=2\n"
        "STATUS:CONFIRMED\n"
        "ORGANIZER:mailto:a@x\n"
        "ATTENDEE;PARTSTAT=NEEDS-ACTION;CN=B;ROLE=REQ-PARTICIPANT;CUTYPE=INDIVIDUAL:\r\n "
        "mailto:b@x\n"
        "ATTENDEE;PARTSTAT=NEEDS-ACTION;CN=;ROLE=CHAIR:mailto:c@x\n"
        "BEGIN:VALARM\n"
        "DESCRIPTION:Soon\n"
        "ACTION:DISPLAY\n"
        "TRIGGER:-P0DT0H-15M0S\n"
        "END:VALARM\n"
        "BEGIN:VALARM\n"
        "DESCRIPTION:Mail\n"
        "TRIGGER:+P0DT0H15M0S\n"
        "END:VALARM\n"
        "END:VEVENT\n"
        "BEGIN:VEVENT\n"
        "DTSTART;TZID=Europe/Berlin:20240102T090000\n"
        "DTEND;TZID=Europe/Berlin:20240102T100000\n"
        "DESCRIPTION:\n"
        "SUMMARY:Talk\n"
        "UID:u1\n"
        "DTSTAMP:20240102T240000Z\n"
        "LAST-MODIFIED:20240102T240100Z\n"
        "STATUS:CONFIRMED\n"
        "END:VEVENT\n"
        "END:VCALENDAR\n");
}

TEST(EventSerialiser, WritesDaysWithoutZones)
{
    const auto text = textOf({.start = january2,
        .end = january2 + 24 * hour,
        .startZone = {},
        .endZone = {},
        .allDay = true});
    EXPECT_EQ(definedZones(text), std::vector<std::string> {});
    expectLine(text, "DTSTART;VALUE=DATE:20240102");
    expectLine(text, "DTEND;VALUE=DATE:20240103");
    // In Berlin the day has begun an hour before.
    expectLine(textOf({.start = january2 - hour, .allDay = true}), "DTSTART;VALUE=DATE:20240102");
}

TEST(EventSerialiser, WritesMidnightAsHour24AndTheWeekBasedYear)
{
    expectLine(textOf({.start = january2 - 2700}), "DTSTART;TZID=Europe/Berlin:20240102T241500");
    constexpr std::int64_t december30 = 1735516800; // 2024
    expectLine(textOf({.start = december30, .startZone = {}, .endZone = {}, .allDay = true}),
        "DTSTART;VALUE=DATE:20251230");
}

TEST(EventSerialiser, HasNoTextForATimedEventThatLacksAZone)
{
    EXPECT_FALSE(eventOf({.startZone = {}, .endZone = "Europe/Berlin"}).iCalendarString());
    EXPECT_FALSE(eventOf({.endZone = {}}).iCalendarString());
    auto event = eventOf({});
    event.occurrences = {{std::make_shared<MRVEvent>(eventOf({.startZone = {}, .endZone = {}}))}};
    expectLine(event.iCalendarString().value(), "DTSTART:20240102T080000Z");
}

TEST(EventSerialiser, DefinesTheEndZoneWhenItDiffersNow)
{
    using Zones = std::vector<std::string>;
    EXPECT_EQ(definedZones(textOf({.endZone = "America/New_York"})),
        (Zones {"Europe/Berlin", "America/New_York"}));
    const auto text = textOf({.endZone = "Europe/Paris"});
    EXPECT_EQ(definedZones(text), Zones {"Europe/Berlin"});
    expectLine(text, "DTEND;TZID=Europe/Paris:20240102T100000");
}

TEST(EventSerialiser, WritesAZoneWithoutDefinitionByNameOnly)
{
    const auto plain = eventOf({});
    const auto custom = TimeZone::fromVTimeZone(
        "BEGIN:VTIMEZONE\r\nTZID:Own/Nowhere\r\nBEGIN:STANDARD\r\nDTSTART:19700101T000000\r\n"
        "TZOFFSETFROM:+0300\r\nTZOFFSETTO:+0300\r\nEND:STANDARD\r\nEND:VTIMEZONE\r\n",
        "Own/Nowhere");
    ASSERT_TRUE(custom);
    const MRVEvent event {
        .uid = "u1",
        .href = "",
        .eTag = "",
        .calendarData = "",
        .status = "",
        .summary = "",
        .startDate = plain.startDate,
        .endDate = plain.endDate,
        .startTimeZone = custom,
        .endTimeZone = custom,
        .calendar = plain.calendar,
    };
    const auto text = event.iCalendarString().value();
    EXPECT_EQ(text.find("VTIMEZONE"), text.npos);
    expectLine(text, "DTSTART;TZID=Own/Nowhere:20240102T110000");
}

TEST(EventSerialiser, WritesDurationsWithASignBeforeEveryPart)
{
    EXPECT_EQ(durationOf(-900), ":-P0DT0H-15M0S");
    EXPECT_EQ(durationOf(900), ":+P0DT0H15M0S");
    EXPECT_EQ(durationOf(-90061.9), ":-P-1DT-1H-1M-1S");
    EXPECT_EQ(durationOf(604801), ":+P7DT0H0M1S");
    EXPECT_EQ(durationOf(-604800), ":-P-1W");
    EXPECT_EQ(durationOf(1209600), ":+P2W");
    EXPECT_EQ(durationOf(0), ":-P0W");
    EXPECT_EQ(durationOf(0.5), ":+P0W");
    EXPECT_EQ(durationOf(-0x1p63), ":-P-106751991167300DT-15H-30M-8S");
}

TEST(EventSerialiser, WritesFixedAlarmTimesWithoutTheirZone)
{
    const MRVAlarm alarm {.desc = "",
        .absoluteTriggerTime = Date::fromSecondsSince1970(january2 + 8 * hour),
        .relativeTriggerTime = -900};
    EXPECT_EQ(trigger(alarm), ":20240102T090000");
    EXPECT_EQ(
        trigger(alarm, {.startZone = {}, .endZone = {}, .allDay = true}), ":20240102T080000Z");
    EXPECT_EQ(trigger({.desc = "neither"}), ":");
}

TEST(EventSerialiser, WritesWhatTheParserReadsBack)
{
    auto event
        = eventOf({.desc = "Long enough to be folded: " + std::string(200, 'x') + " \xC3\xA4",
            .summary = "S\\, \xF0\x9F\x8E\x89",
            .start = january2 + 30 * hour,
            .end = january2 + 32 * hour,
            .endZone = "Europe/London"});
    event.recurRule = "FREQ=WEEKLY;BYDAY=MO";
    const std::vector<double> offsets {-900, 900, -604800, -90061, 0};
    event.alarms.emplace();
    for (const double offset : offsets) {
        event.alarms->push_back(
            std::make_shared<MRVAlarm>(MRVAlarm {.desc = "", .relativeTriggerTime = offset}));
    }
    const auto read = readBack(event);
    EXPECT_EQ(read->uid, event.uid);
    EXPECT_EQ(read->summary, event.summary);
    EXPECT_EQ(read->status, event.status);
    EXPECT_EQ(read->recurRule, event.recurRule);
    EXPECT_EQ(read->startDate, event.startDate);
    EXPECT_EQ(read->endDate, event.endDate);
    EXPECT_EQ(read->startTimeZone, event.startTimeZone);
    EXPECT_EQ(read->endTimeZone, event.endTimeZone);
    EXPECT_FALSE(read->allDay);
    for (std::size_t i = 0; i < offsets.size(); ++i) {
        EXPECT_EQ(read->alarms->at(i)->relativeTriggerTime, offsets[i]);
    }
    // Every fold leaves a carriage return in the value.
    auto desc = read->desc.value();
    std::erase(desc, '\r');
    EXPECT_EQ(desc, event.desc);
}

TEST(EventSerialiserDeathTest, StopsTheProcessForOffsetsThatAreNoNumberOfSeconds)
{
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    for (const double offset : {std::numeric_limits<double>::quiet_NaN(),
             -std::numeric_limits<double>::infinity(), 0x1p63}) {
        EXPECT_DEATH(durationOf(offset), "offset of an alarm");
    }
}
