#include "Tessel/icalendar/CGICalendarDate.h"
#include "Tessel/icalendar/CGICalendarValue.h"

#include "Tessel/Platform/Foundation/Time/TimeZone.h"
#include <gtest/gtest.h>

namespace Tessel {
namespace {

constexpr auto newYearsMorning = Date::fromSecondsSince1970(1735518600); // 2024-12-30T00:30:00Z

TEST(CalendarDateTests, WritesTheWeekBasedYearAndHour24)
{
    CGICalendarValue value;
    value.setDate(newYearsMorning);
    EXPECT_EQ(value.value(), "20251230T243000Z");
    EXPECT_EQ(value.dateValue(), dateWithICalendarString("20251230T243000Z"));
    value.setValue("20240102");
    EXPECT_EQ(value.dateValue(), std::nullopt);
}

TEST(CalendarDateTests, ReadsTheICalendarForm)
{
    EXPECT_EQ(dateWithICalendarString("20240102T090000Z"), Date::fromSecondsSince1970(1704186000));
    EXPECT_EQ(dateWithICalendarString("20241230T243000Z"), newYearsMorning);
    EXPECT_EQ(dateWithICalendarString("20241230T003000Z"), newYearsMorning);
    for (const auto* text : {"", "20240102", "20240102T090000", "20241302T090000Z",
             "20240102T090000Zx", "2024-01-02 09:00:00"}) {
        EXPECT_EQ(dateWithICalendarString(text), std::nullopt) << text;
    }
}

TEST(CalendarDateTests, ReadsBackTheLocalISOForm)
{
    const auto date = Date::fromSecondsSince1970(1720000000);
    EXPECT_EQ(dateWithICalendarISO8601(descriptionISO8601(date)), date);
    const auto local = TimeZone::local().dateFromLocalMilliseconds(1704186000'000);
    EXPECT_EQ(descriptionISO8601(local), "2024-01-02 09:00:00");
    EXPECT_EQ(dateWithICalendarISO8601("2024-01-02 09:00:00"), local);
    EXPECT_EQ(dateWithICalendarISO8601("20240102T090000Z"), std::nullopt);
}

} // namespace
} // namespace Tessel
