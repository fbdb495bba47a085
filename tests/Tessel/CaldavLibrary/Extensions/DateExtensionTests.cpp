#include "Tessel/CaldavLibrary/Extensions/ArrayExtension.h"
#include "Tessel/CaldavLibrary/Extensions/DateExtension.h"
#include "Tessel/CaldavLibrary/Extensions/StringExtension.h"

#include <gtest/gtest.h>

#include <vector>

using namespace Tessel;

namespace {

const Date nine = Date::fromSecondsSince1970(1'704'186'000); // 2024-01-02T09:00Z
const Date midnight = Date::fromSecondsSince1970(1'704'153'600); // 2024-01-02T00:00Z

TimeZone berlin()
{
    return TimeZone::withIdentifier("Europe/Berlin").value();
}

} // namespace

TEST(DateExtension, WritesDateTimesInAZoneOrInUTC)
{
    EXPECT_EQ(descriptionICalDateTimeFormat(nine), "20240102T090000Z");
    EXPECT_EQ(descriptionICalDateTimeFormat(nine, berlin()), "20240102T100000");
    EXPECT_EQ(descriptionICalDateTimeFormat(nine, TimeZone::UTC()), "20240102T090000");
    EXPECT_EQ(descriptionICalDateFormat(nine), "20240102");
    const auto late = Date::fromSecondsSince1970(1'704'236'400); // 23:00Z, the next day in Berlin
    EXPECT_EQ(descriptionICalDateFormat(late, berlin()), "20240103");
}

TEST(DateExtension, WritesHour24AndTheYearOfTheWeek)
{
    const auto date = Date::fromSecondsSince1970(1'735'518'600); // 2024-12-30T00:30Z
    EXPECT_EQ(descriptionICalDateTimeFormat(date), "20251230T243000Z");
    EXPECT_EQ(descriptionICalDateFormat(date), "20251230");
}

TEST(DateExtension, ReadsTheThreeForms)
{
    EXPECT_EQ(iCalDateTime("20240102T090000Z"), nine);
    EXPECT_EQ(iCalDateTime("20240102T090000"), nine);
    EXPECT_EQ(iCalDateTime("20240102T100000", berlin()), nine);
    EXPECT_EQ(iCalDateTime("20240102T100000Z", berlin()), nine) << "the given zone wins";
    EXPECT_EQ(iCalDateTime("20240102"), midnight);
    EXPECT_EQ(iCalDateTime("20240102T000000"), midnight);
    EXPECT_EQ(iCalDateTime("20240102T240000"), midnight);
    EXPECT_EQ(iCalDateTime("20240102", berlin()), Date::fromSecondsSince1970(1'704'150'000));
}

TEST(DateExtension, TellsWhatCannotBeRead)
{
    for (const auto* const text : {"", "Z", "2024010", "202401021", "20240102T0900",
             "20240102T090000ZZ", "20241302", "20240102T090000\r", "tomorrow"})
        EXPECT_FALSE(iCalDateTimeIfReadable(text).has_value()) << text;
}

TEST(DateExtensionDeathTest, AnUnreadableDateStopsTheProcess)
{
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_DEATH(iCalDateTime("20241302T090000Z"), "20241302T090000Z.*DateExtensionTests");
    EXPECT_DEATH(iCalDateTime(""), "not an iCalendar date");
}

TEST(StringExtension, ChoosesThePatternByTheShape)
{
    EXPECT_EQ(iCalDate("20240102"), midnight);
    EXPECT_EQ(iCalDate("20240102T090000"), nine);
    EXPECT_EQ(iCalDate("20240102T090000Z"), nine);
    for (const auto* const text : {"", "2024010Z", "2024010", "20240102Z", "20240102T09000Z",
             "\xC3\xA9\xC3\xA9\xC3\xA9\xC3\xA9\xC3\xA9\xC3\xA9\xC3\xA9\xC3\xA9"})
        EXPECT_FALSE(iCalDate(text).has_value()) << text;
    EXPECT_EQ(date("2.1.2024 9", "d.M.YYYY H"), nine);
    EXPECT_FALSE(date("2.1.2024", "YYYYMMdd").has_value());
}

TEST(ArrayExtension, WalksTheListAgainAndAgain)
{
    using List = std::vector<int>;
    const List list {1, 2, 3};
    const auto isThree = [](int element) { return element == 3; };
    EXPECT_EQ(repeatingList(list, 5), (List {1, 2, 3, 1, 2}));
    EXPECT_EQ(repeatingList(list, -1), List());
    EXPECT_EQ(repeatingList(List(), 5), List());
    EXPECT_EQ(repeatingList(list, isThree), (List {1, 2}));
    EXPECT_EQ(repeatingList(list, 1, isThree), List {1});
    EXPECT_EQ(repeatingList(list, 5, isThree), (List {1, 2}));
    EXPECT_EQ(repeatingList(List(), isThree), List());
}
