#include "Tessel/Platform/Foundation/Time/DateFormatter.h"

#include <gtest/gtest.h>

#include <unicode/basictz.h>
#include <unicode/strenum.h>
#include <unicode/vtzone.h>

#include <cmath>
#include <limits>
#include <memory>
#include <string>
#include <vector>

using namespace Tessel;
using namespace std::string_literals;

namespace {

constexpr std::int64_t hour = 3'600'000;

std::string component(const std::string& observances)
{
    return "BEGIN:VTIMEZONE\r\nTZID:Own\r\n" + observances + "END:VTIMEZONE\r\n";
}

std::string observance(const std::string& kind, const std::string& lines)
{
    return "BEGIN:" + kind + "\r\n" + lines + "END:" + kind + "\r\n";
}

std::string standard(const std::string& lines)
{
    return observance("STANDARD", "TZOFFSETFROM:+0200\r\nTZOFFSETTO:+0100\r\n" + lines);
}

std::string daylight(const std::string& lines)
{
    return observance("DAYLIGHT", "TZOFFSETFROM:+0100\r\nTZOFFSETTO:+0200\r\n" + lines);
}

/// Clocks go forward by the given lines; they go back every 1 October at midnight.
std::string summer(const std::string& lines)
{
    return component(
        standard("DTSTART:19701001T000000\r\nRRULE:FREQ=YEARLY\r\n") + daylight(lines));
}

struct Definition {
    const char* name;
    std::string text;
    /// The offset at some moments of UTC; none when the definition cannot be read.
    std::vector<std::pair<const char*, int>> offsets;
};

constexpr int winterTime = 3600;
constexpr int summerTime = 7200;

const std::vector<Definition> definitions {
    {"rules without an end hold for ever",
        summer("DTSTART:19700329T020000\r\nRRULE:FREQ=YEARLY;BYMONTH=3;BYDAY=-1SU\r\n"),
        {{"1960-07-01 00:00", winterTime}, {"1970-03-29 00:59", winterTime},
            {"1970-03-29 01:00", summerTime}, {"2050-03-27 01:00", summerTime},
            {"2050-12-01 00:00", winterTime}, {"9998-07-01 00:00", summerTime}}},
    {"a rule and dates in one observance",
        summer("DTSTART:20000401T000000\r\nRRULE:FREQ=YEARLY;UNTIL=20020401T000000Z\r\n"
               "RDATE:20050501T000000\r\nRDATE;VALUE=PERIOD:20060601T000000/P1D,20070601T000000/"
               "P1D\r\n"),
        {{"2002-04-01 00:00", summerTime}, {"2003-07-01 00:00", winterTime},
            {"2005-04-30 22:59", winterTime}, {"2005-04-30 23:00", summerTime},
            {"2007-07-01 00:00", summerTime}, {"2008-07-01 00:00", winterTime}}},
    {"several rules in one observance",
        summer("DTSTART:20000401T000000\r\nRRULE:FREQ=YEARLY;UNTIL=20010501T000000Z\r\n"
               "RRULE:FREQ=YEARLY;BYMONTH=5;BYMONTHDAY=1\r\n"),
        {{"2001-04-02 00:00", summerTime}, {"2002-04-02 00:00", winterTime},
            {"2002-05-02 00:00", summerTime}}},
    {"dates begin with DTSTART", summer("DTSTART:20000401T000000\r\nRDATE:20020401T000000Z\r\n"),
        {{"2000-05-01 00:00", summerTime}, {"2001-05-01 00:00", winterTime},
            {"2002-05-01 00:00", summerTime}}},
    {"the last change is within UNTIL",
        summer("DTSTART:20000401T000000\r\nRRULE:FREQ=YEARLY;UNTIL=20020331T225959Z\r\n"),
        {{"2001-07-01 00:00", summerTime}, {"2002-07-01 00:00", winterTime}}},
    {"UNTIL as a local day",
        summer("DTSTART:20000401T000000\r\nRRULE:FREQ=YEARLY;UNTIL=20020401\r\n"),
        {{"2002-07-01 00:00", summerTime}, {"2003-07-01 00:00", winterTime}}},
    {"COUNT", summer("DTSTART:20000401T000000\r\nRRULE:FREQ=YEARLY;COUNT=3\r\n"),
        {{"2002-07-01 00:00", summerTime}, {"2003-07-01 00:00", winterTime}}},
    {"INTERVAL", summer("DTSTART:20000401T000000\r\nRRULE:INTERVAL=2;FREQ=YEARLY;WKST=MO\r\n"),
        {{"2001-07-01 00:00", winterTime}, {"2002-07-01 00:00", summerTime},
            {"2003-07-01 00:00", winterTime}}},
    {"a weekday within days of the month",
        summer(
            "DTSTART:20000409T000000\r\nRRULE:FREQ=YEARLY;BYMONTH=4;BYMONTHDAY=8,9,10,11,12,13,14;"
            "BYDAY=SU\r\n"),
        {{"2024-04-13 22:59", winterTime}, {"2024-04-13 23:00", summerTime}}},
    {"a weekday by its position",
        summer("DTSTART:20000326T000000\r\nRRULE:FREQ=YEARLY;BYMONTH=3;BYDAY=SU;BYSETPOS=-1\r\n"),
        {{"2024-03-30 22:59", winterTime}, {"2024-03-30 23:00", summerTime}}},
    {"a day from the end of the month, the month from DTSTART",
        summer("DTSTART:20000331T000000\r\nRRULE:FREQ=YEARLY;BYMONTHDAY=-1\r\n"),
        {{"2024-03-30 22:59", winterTime}, {"2024-03-30 23:00", summerTime}}},
    {"29 February", summer("DTSTART:20000229T000000\r\nRRULE:FREQ=YEARLY\r\n"),
        {{"2023-07-01 00:00", winterTime}, {"2024-07-01 00:00", summerTime}}},
    {"rules that reach back far",
        component(standard("DTSTART:16010101T030000\r\nRRULE:FREQ=YEARLY;BYDAY=-1SU;BYMONTH=10\r\n")
            + daylight("DTSTART:16010101T020000\r\nRRULE:FREQ=YEARLY;BYDAY=-1SU;BYMONTH=3\r\n")),
        {{"2024-07-01 00:00", summerTime}, {"2024-12-01 00:00", winterTime},
            {"1700-07-01 00:00", summerTime}, {"1600-07-01 00:00", winterTime}}},
    {"folds, parameters, seconds and lone line feeds",
        "BEGIN:VTIMEZONE\nTZID:Own\nX-LIC-LOCATION:Europe/Berlin\nBEGIN:STANDARD\n"
        "DTSTART;X-A=\"a:b\":20200101T0000\n 00\nTZNAME;LANGUAGE=en:Some:name\n"
        "TZOFFSETFROM:+0053\n\t28\nTZOFFSETTO:-033000\nEND:STANDARD\nEND:VTIMEZONE",
        {{"1970-01-01 00:00", 53 * 60 + 28}, {"2024-01-01 00:00", -3 * 3600 - 1800}}},

    {"no observance", component(""), {}},
    {"an open observance", component("BEGIN:STANDARD\r\n"), {}},
    {"an observance that never comes",
        component(
            daylight("DTSTART:20000401T000000\r\nRRULE:FREQ=YEARLY;BYMONTH=2;BYMONTHDAY=30\r\n")),
        {}},
    {"no start", component(standard("")), {}},
    {"no time", component(standard("DTSTART:never\r\n")), {}},
    {"a day that does not exist", component(standard("DTSTART:20230229T000000\r\n")), {}},
    {"an hour that does not exist", component(standard("DTSTART:20230228T240000\r\n")), {}},
    {"an offset beyond a day",
        component(observance(
            "STANDARD", "DTSTART:19700101T000000\r\nTZOFFSETFROM:+9999\r\nTZOFFSETTO:-9999\r\n")),
        {}},
    {"no offset", component(observance("STANDARD", "DTSTART:19700101T000000\r\n")), {}},
    {"a zero byte", component(standard("DTSTART:19700101T000000\0\r\n"s)), {}},
    {"one date that cannot be read",
        summer("DTSTART:20000401T000000\r\nRDATE:20010401T000000,tomorrow\r\n"), {}},
    {"a monthly rule", summer("DTSTART:20000401T000000\r\nRRULE:FREQ=MONTHLY\r\n"), {}},
    {"every Sunday", summer("DTSTART:20000401T000000\r\nRRULE:FREQ=YEARLY;BYDAY=SU\r\n"), {}},
    {"a month that does not exist",
        summer("DTSTART:20000401T000000\r\nRRULE:FREQ=YEARLY;BYMONTH=13\r\n"), {}},
    {"a weekday that does not exist",
        summer("DTSTART:20000401T000000\r\nRRULE:FREQ=YEARLY;BYDAY=1XX\r\n"), {}},
    {"an interval of nothing",
        summer("DTSTART:20000401T000000\r\nRRULE:FREQ=YEARLY;INTERVAL=0\r\n"), {}},
    {"nine rules for one time",
        [] {
            std::string lines = "DTSTART:20000401T000000\r\n";
            for (int month = 2; month < 11; ++month)
                lines += "RRULE:FREQ=YEARLY;BYMONTH=" + std::to_string(month) + "\r\n";
            return component(daylight(lines));
        }(),
        {}},
    {"a count of days that some years lack",
        summer("DTSTART:20000229T000000\r\nRRULE:FREQ=YEARLY;COUNT=3\r\n"), {}},
    {"a count of millions",
        summer("DTSTART:20000401T000000\r\nRRULE:FREQ=YEARLY;COUNT=9999999\r\n"), {}},
};

Date momentNamed(const char* text)
{
    return DateFormatter::date(text, "YYYY-MM-dd HH:mm", TimeZone::UTC()).value();
}

/// What ICU writes for a zone: recurrences that ended, dates, and what holds for ever.
std::string writtenByICU(const icu::UnicodeString& identifier)
{
    const std::unique_ptr<icu::VTimeZone> zone(icu::VTimeZone::createVTimeZoneByID(identifier));
    icu::UnicodeString text;
    std::string result;
    UErrorCode status = U_ZERO_ERROR;
    if (zone) zone->write(text, status);
    return text.toUTF8String(result);
}

} // namespace

TEST(VTimeZone, ReadsObservancesAsServersWriteThem)
{
    for (const auto& [name, text, offsets] : definitions) {
        SCOPED_TRACE(name);
        const auto zone = TimeZone::fromVTimeZone(text, "Own");
        if (offsets.empty()) {
            EXPECT_FALSE(zone.has_value());
            continue;
        }
        ASSERT_TRUE(zone.has_value());
        EXPECT_EQ(zone->identifier(), "Own");
        for (const auto& [moment, offset] : offsets)
            EXPECT_EQ(zone->secondsFromGMT(momentNamed(moment)), offset) << moment;
    }
}

TEST(VTimeZone, HostileRulesGiveNoZoneOrAnUsableOne)
{
    std::string manyRules;
    for (int i = 0; i < 500; ++i)
        manyRules += observance(i % 2 ? "STANDARD" : "DAYLIGHT",
            "DTSTART:00010101T000000\r\nRRULE:FREQ=YEARLY;BYMONTH=" + std::to_string(i % 12 + 1)
                + ";BYDAY=-1SU;UNTIL=99991231T000000Z\r\nTZOFFSETFROM:+0" + std::to_string(i % 10)
                + "00\r\nTZOFFSETTO:-0" + std::to_string((i + 1) % 10) + "00\r\n");
    std::string mostRules; // as many as are read at all
    for (int i = 0; i < 250; ++i)
        mostRules += observance(i % 2 ? "STANDARD" : "DAYLIGHT",
            "DTSTART:" + std::to_string(1600 + i) + "0101T000000\r\n"
                + "RRULE:FREQ=YEARLY;BYMONTH=5;BYDAY=-1SU;UNTIL=" + std::to_string(1613 + i)
                + "1231T000000Z\r\nTZOFFSETFROM:+0100\r\nTZOFFSETTO:+0200\r\n");
    const std::string fixed = "TZOFFSETFROM:+0100\r\nTZOFFSETTO:+0100\r\n";
    std::string manyDates = "DTSTART:19700101T000000\r\n" + fixed;
    for (int i = 0; i < 2000; ++i)
        manyDates += "RDATE:" + std::to_string(1000 + i) + "0101T000000\r\n";

    std::string manyDays = "DTSTART:00010101T000000\r\n" + fixed; // a rule for every day
    for (int i = 0; i < 50; ++i)
        manyDays
            += "RRULE:FREQ=YEARLY;BYMONTH=1,2,3,4,5,6,7,8,9,10,11,12;BYMONTHDAY=1,2,3,4,5,6,7,8,"
               "9,10,11,12,13,14,15,16,17,18,19,20,21,22,23,24,25,26,27,28,29,30,31;COUNT=99\r\n";

    const std::string texts[] = {"", "BEGIN:VTIMEZONE", component(manyRules), component(mostRules),
        component(std::string(10'000'000, 'x')), "\xFF\xFE",
        component(observance("STANDARD", manyDates)), component(observance("STANDARD", manyDays)),
        component(observance("STANDARD",
            "DTSTART:99991231T235959\r\nRRULE:FREQ=YEARLY;INTERVAL=1000;UNTIL=00000101\r\n"
                + fixed))};
    for (const auto& text : texts) {
        const auto zone = TimeZone::fromVTimeZone(text, "Own");
        if (!zone) continue;
        for (const std::int64_t year : {-3000, -30, 0, 30, 54, 8000}) {
            const auto date = Date::fromSecondsSince1970(year * 365 * 86'400);
            EXPECT_LT(std::abs(zone->secondsFromGMT(date)), 5 * 86'400) << text.substr(0, 200);
            zone->dateFromLocalMilliseconds(date.millisecondsSince1970());
        }
    }
}

TEST(VTimeZone, ReadsWhatICUWrites)
{
    UErrorCode status = U_ZERO_ERROR;
    const std::unique_ptr<icu::StringEnumeration> names(icu::TimeZone::createTimeZoneIDEnumeration(
        UCAL_ZONE_TYPE_CANONICAL_LOCATION, nullptr, nullptr, status));
    int count = 0;
    while (const auto* const name = names->snext(status)) {
        std::string identifier;
        SCOPED_TRACE(name->toUTF8String(identifier));
        const std::unique_ptr<icu::TimeZone> opponent(icu::TimeZone::createTimeZone(*name));
        const auto zone = TimeZone::fromVTimeZone(writtenByICU(*name), "Own");
        ASSERT_TRUE(zone.has_value());
        for (std::int64_t time = -60 * 8'766 * hour; time < 90 * 8'766 * hour; time += 295 * hour) {
            int32_t raw = 0;
            int32_t saving = 0;
            opponent->getOffset(static_cast<UDate>(time), false, raw, saving, status);
            ASSERT_EQ(
                zone->secondsFromGMT(Date::fromMillisecondsSince1970(time)), (raw + saving) / 1000)
                << time;
        }
        ++count;
    }
    EXPECT_GT(count, 300);
}
