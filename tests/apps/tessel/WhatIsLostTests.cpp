#include "apps/tessel/EventReading.h"
#include "apps/tessel/WhatIsLost.h"

#include <gtest/gtest.h>

namespace Tessel::App {
namespace {

using Names = std::vector<std::string>;

std::string event(const std::string& properties)
{
    return "BEGIN:VCALENDAR\nVERSION:2.0\nPRODID:-//Example//EN\nBEGIN:VTIMEZONE\n"
           "TZID:Europe/Berlin\nEND:VTIMEZONE\nBEGIN:VEVENT\nUID:1\n"
           "DTSTAMP:20260101T000000Z\nDTSTART;TZID=Europe/Berlin:20270118T093000\n"
           "DTEND;TZID=Europe/Berlin:20270118T103000\nSUMMARY:Lunch\nDESCRIPTION:Food\n"
           "STATUS:CONFIRMED\n"
        + properties + "END:VEVENT\nEND:VCALENDAR\n";
}

Names lost(const std::string& properties)
{
    const auto text = event(properties);
    return whatIsLost(text, *readEvent(text, nullptr));
}

TEST(WhatIsLostTest, NothingOfWhatTheLibraryWritesItself)
{
    EXPECT_EQ(lost(""), Names {});
    EXPECT_EQ(lost("RRULE:FREQ=DAILY\nLAST-MODIFIED:20260101T000000Z\n"
                   "ATTENDEE;CN=Bob;EMAIL=bob@example.com;ROLE=CHAIR;PARTSTAT=NEEDS-ACTION:"
                   "mailto:bob@example.com\n"
                   "BEGIN:VALARM\nACTION:DISPLAY\nDESCRIPTION:Go\nTRIGGER:-PT15M\nEND:VALARM\n"),
        Names {});
    const auto once = readEvent(event("RRULE:FREQ=DAILY\n"), nullptr);
    const auto written = once->iCalendarString().value();
    EXPECT_EQ(whatIsLost(written, *readEvent(written, nullptr)), Names {});
}

TEST(WhatIsLostTest, NamesWhatDoesNotSurvive)
{
    EXPECT_EQ(lost("LOCATION:Here\nEXDATE:20270119T083000Z\nX-NOTE:n\nRRULE:FREQ=DAILY\n"),
        (Names {"EXDATE", "LOCATION", "X-NOTE"}));
    EXPECT_EQ(lost("ATTENDEE;CN=Bob;ROLE=CHAIR;EMAIL=b@x.org;PARTSTAT=ACCEPTED:mailto:b@x.org\n"),
        Names {"ATTENDEE (parameters or value)"});
    EXPECT_EQ(lost("ATTENDEE;CN=Bob;ROLE=CHAIR;PARTSTAT=NEEDS-ACTION:mailto:b@x.org\n"),
        Names {"ATTENDEE (parameters or value)"})
        << "the address is read from EMAIL only";
    EXPECT_EQ(lost("BEGIN:VALARM\nACTION:EMAIL\nDESCRIPTION:Go\nTRIGGER:-PT15M\nEND:VALARM\n"),
        Names {"VALARM ACTION"});
}

TEST(WhatIsLostTest, RefusesComponentsThatAreNestedTooDeep)
{
    const auto nested = [](int depth) {
        std::string text;
        for (int i = 0; i < depth; ++i)
            text += "BEGIN:X\n";
        return text + "X-NOTE:n\n";
    };
    EXPECT_EQ(lost(nested(2)), Names {"X X X-NOTE"});
    EXPECT_THROW(lost(nested(500'000)), std::runtime_error);
}

TEST(WhatIsLostTest, NamesWhatIsWrittenDifferently)
{
    const auto damaged = [](std::string text, std::string_view from, std::string_view to) {
        text.replace(text.find(from), from.size(), to);
        return whatIsDamaged(*readEvent(text, nullptr));
    };
    EXPECT_EQ(whatIsDamaged(*readEvent(event(""), nullptr)), Names {});
    // The writer drops the end of a line whose length is a multiple of 75.
    const std::string line = "SUMMARY:" + std::string(150 - 8, 's');
    EXPECT_EQ(damaged(event(""), "SUMMARY:Lunch", line), Names {"SUMMARY"});
    EXPECT_EQ(damaged(event(""), "SUMMARY:Lunch", line + "s"), Names {});
    // The writer's year is the week's: 31 December 2029 is a Monday, of the first week of 2030.
    EXPECT_EQ(damaged(event(""), "DTEND;TZID=Europe/Berlin:20270118",
                  "DTEND;TZID=Europe/Berlin:20291231"),
        Names {"DTEND"});
    EXPECT_EQ(damaged(event(""), "STATUS:CONFIRMED\n",
                  "STATUS:CONFIRMED\nBEGIN:VALARM\nTRIGGER:-PT15M\nEND:VALARM\n"),
        Names {"VALARM TRIGGER"});
}

} // namespace
} // namespace Tessel::App
