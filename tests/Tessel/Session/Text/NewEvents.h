#pragma once

#include "Tessel/Session/Text/EventEdit.h"

#include <vector>

namespace Tessel {

/// Events of every shape, from the last days of 2026 on. Without what icalendar 4 misreads: a comma
/// in a category, a backslash before an "n".
inline std::vector<EventEdit> newEvents()
{
    using namespace std::chrono;
    constexpr auto day = local_days(year(2026) / 12 / 28);
    return {
        {.summary = "Plain", .start = EventMoment::utc(sys_days(year(2026) / 12 / 31) + 23h)},
        {.summary = "Commas, semicolons; back\\slash: \"quotes\"\nand a second line 🍝"
                + std::string(100, 'x'),
            .description = "\n\nGrüße,\n\tIhr Büro\n" + std::string(300, 'y'),
            .location = "Room; 1, North",
            .url = "https://example.com/?a=1,2;b=3&c=%20d",
            .status = "TENTATIVE",
            .categories = {"One two", "three;four", "fünf"},
            .start = EventMoment::zoned(day + 9h, "Europe/Berlin"),
            .end = EventMoment::zoned(day + 10h + 30min, "America/New_York"),
            .organizer = EventAttendee {.address = "alice@example.com", .name = "Alice"},
            .attendees = {{.address = "bob@example.com",
                              .name = "Bob; \"the\": one, only",
                              .status = "NEEDS-ACTION",
                              .role = "REQ-PARTICIPANT",
                              .rsvp = true},
                {.address = "urn:uuid:1", .name = "Rôom", .type = "ROOM"}},
            .alarms = {{15min}, {.before = -1h, .isFromEnd = true, .text = "Over, done"},
                {.at = Date::fromSecondsSince1970(1'798'000'000), .action = "AUDIO"},
                {.before = 24h, .action = "EMAIL", .recipients = {"bob@example.com"}}}},
        {.summary = "", .start = EventMoment::day(day), .end = EventMoment::day(day + days(4))},
        {.summary = "Floating",
            .start = EventMoment::floating(day + 0h),
            .rule = "FREQ=DAILY;COUNT=5"},
        {.summary = "Series",
            .start = EventMoment::zoned(day + 23h + 59min, "Asia/Kathmandu"),
            .end = EventMoment::zoned(day + days(1), "Asia/Kathmandu"),
            .rule = "FREQ=WEEKLY;UNTIL=20270331;BYDAY=MO",
            .dates = {{EventMoment::zoned(day + days(1), "Asia/Kathmandu")}},
            .exceptions = {{EventMoment::zoned(day + days(7) + 23h + 59min, "Asia/Kathmandu")}}},
        {.summary = "Windows zone",
            .start = EventMoment::zoned(day + 8h, "W. Europe Standard Time"),
            .end = EventMoment::zoned(day + 9h, "W. Europe Standard Time")},
    };
}

} // namespace Tessel
