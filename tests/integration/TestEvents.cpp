#include "tests/integration/TestEvents.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace Tessel::Test {

namespace {

constexpr auto written = Date::fromSecondsSince1970(1'793'523'600); // 2026-11-01T09:00:00Z
constexpr auto morning = Date::fromSecondsSince1970(1'804'500'000); // 2027-03-08T10:00:00Z

std::shared_ptr<MRVAttendee> person(const std::string& name, const std::string& role)
{
    const auto address = name + "@example.org"; // nobody whom a server could ask
    return std::make_shared<MRVAttendee>(MRVAttendee {
        .email = address,
        .role = role,
        .cn = role == "organizer" ? "" : name, // which is not written
        .href = "mailto:" + address,
        .isOrganizer = role == "organizer",
    });
}

/// A text as it was before it was folded.
std::string unfolded(std::string text)
{
    std::erase(text, '\r');
    return text;
}

std::string people(const MRVEvent& event)
{
    std::vector<std::string> lines;
    for (const auto& one : event.attendees.value_or(std::vector<std::shared_ptr<MRVAttendee>> {})) {
        lines.push_back(
            unfolded(one->href + " " + one->cn + (one->isOrganizer ? " organizer" : one->role)));
    }
    std::sort(lines.begin(), lines.end());
    std::string all;
    for (const auto& line : lines)
        all += line + "\n";
    return all;
}

std::string alarms(const MRVEvent& event)
{
    std::string all;
    for (const auto& one : event.alarms.value_or(std::vector<std::shared_ptr<MRVAlarm>> {})) {
        all += one->desc + " " + std::to_string(one->relativeTriggerTime.value_or(0)) + " "
            + std::to_string(int(one->action)) + "\n";
    }
    return all;
}

std::string identifier(const std::optional<TimeZone>& zone)
{
    return zone ? zone->identifier() : "";
}

} // namespace

std::string eventText(const std::string& uid, const std::string& summary)
{
    return "BEGIN:VCALENDAR\r\nVERSION:2.0\r\nPRODID:-//Example//Test//EN\r\nBEGIN:VEVENT\r\nUID:"
        + uid
        + "\r\nDTSTAMP:20261101T080000Z\r\nCREATED:20261101T080000Z\r\n"
          "LAST-MODIFIED:20261101T080000Z\r\nDTSTART:20270118T090000Z\r\n"
          "DTEND:20270118T100000Z\r\nSUMMARY:"
        + summary + "\r\nSTATUS:CONFIRMED\r\nEND:VEVENT\r\nEND:VCALENDAR\r\n";
}

std::shared_ptr<MRVEvent> newEvent(
    const std::shared_ptr<MRVCalendar>& calendar, const std::string& summary)
{
    const auto berlin = TimeZone::withIdentifier("Europe/Berlin");
    return std::make_shared<MRVEvent>(MRVEvent {
        .desc = "",
        .status = "CONFIRMED",
        .summary = summary,
        .createdDate = written,
        .lastModifiedDate = written,
        .startDate = morning,
        .endDate = Date::fromSecondsSince1970(1'804'503'600),
        .startTimeZone = berlin,
        .endTimeZone = berlin,
        .calendar = calendar,
    });
}

std::shared_ptr<MRVEvent> newFlight(
    const std::shared_ptr<MRVCalendar>& calendar, double alarmOffset)
{
    std::string agenda = "Käse\\, Pierogi\\n東京";
    for (int i = 0; i < 20; ++i)
        agenda += " Łódź — nächster Halt\\; Schöneberg";
    const auto alarm
        = std::make_shared<MRVAlarm>(MRVAlarm {.desc = "Auf!", .relativeTriggerTime = alarmOffset});
    return std::make_shared<MRVEvent>(MRVEvent {
        .desc = agenda,
        .status = "TENTATIVE",
        .summary = "Flug nach Kalkutta ✈",
        .createdDate = written,
        .lastModifiedDate = written,
        .startDate = morning,
        .endDate = Date::fromSecondsSince1970(1'804'536'000),
        .startTimeZone = TimeZone::withIdentifier("Europe/Berlin"),
        .endTimeZone = TimeZone::withIdentifier("Asia/Kolkata"),
        .attendees = std::vector {person("zofia", "organizer"), person("ravi", "REQ-PARTICIPANT"),
            person("Anaïs", "OPT-PARTICIPANT")},
        .alarms = std::vector {alarm},
        .recurRule = "FREQ=WEEKLY;COUNT=4",
        .calendar = calendar,
    });
}

std::shared_ptr<MRVEvent> newHoliday(const std::shared_ptr<MRVCalendar>& calendar)
{
    return std::make_shared<MRVEvent>(MRVEvent {
        .desc = "",
        .status = "CONFIRMED",
        .summary = "Ferien",
        .createdDate = written,
        .lastModifiedDate = written,
        .startDate = Date::fromSecondsSince1970(1'804'464'000), // 2027-03-08
        .endDate = Date::fromSecondsSince1970(1'804'636'800),
        .calendar = calendar,
        .allDay = true,
    });
}

std::shared_ptr<MRVEvent> renamed(const MRVEvent& event, const std::string& summary)
{
    return std::make_shared<MRVEvent>(MRVEvent {
        .uid = event.uid,
        .href = event.href,
        .eTag = event.eTag,
        .desc = event.desc,
        .status = event.status,
        .summary = summary,
        // Not the event's own, which is the moment of reading where the server sends no CREATED: in
        // the hour after midnight Radicale refuses the DTSTAMP that is written for it.
        .createdDate = written,
        .lastModifiedDate = event.lastModifiedDate,
        .startDate = event.startDate,
        .endDate = event.endDate,
        .startTimeZone = event.startTimeZone,
        .endTimeZone = event.endTimeZone,
        .recurRule = event.recurRule,
        .calendar = event.calendar,
    });
}

void expectSame(const MRVEvent& there, const MRVEvent& written)
{
    EXPECT_EQ(there.uid, written.uid);
    EXPECT_EQ(unfolded(there.summary), written.summary);
    EXPECT_EQ(unfolded(there.desc.value_or("")), written.desc.value_or(""));
    EXPECT_EQ(there.status, written.status);
    EXPECT_EQ(there.lastModifiedDate, written.lastModifiedDate);
    EXPECT_EQ(there.startDate, written.startDate);
    EXPECT_EQ(there.endDate, written.endDate);
    EXPECT_EQ(identifier(there.startTimeZone), identifier(written.startTimeZone));
    EXPECT_EQ(identifier(there.endTimeZone), identifier(written.endTimeZone));
    EXPECT_EQ(there.recurRule, written.recurRule);
    EXPECT_EQ(there.allDay, written.allDay);
    EXPECT_EQ(people(there), people(written));
    EXPECT_EQ(alarms(there), alarms(written));
}

} // namespace Tessel::Test
