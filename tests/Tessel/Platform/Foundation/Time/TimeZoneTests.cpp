#include "Tessel/Platform/Foundation/Time/TimeZone.h"

#include <gtest/gtest.h>

#include <unicode/timezone.h>

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

const std::string berlin
    = component(observance("STANDARD",
                    "DTSTART:19701025T030000\r\nRRULE:FREQ=YEARLY;BYMONTH=10;BYDAY=-1SU\r\n"
                    "TZOFFSETFROM:+0200\r\nTZOFFSETTO:+0100\r\n")
        + observance("DAYLIGHT",
            "DTSTART:19700329T020000\r\nRRULE:FREQ=YEARLY;BYMONTH=3;BYDAY=-1SU\r\n"
            "TZOFFSETFROM:+0100\r\nTZOFFSETTO:+0200\r\n"));

} // namespace

TEST(TimeZone, KnowsTheZonesOfTheDatabaseOnly)
{
    for (const auto* const name : {"Europe/Berlin", "America/Argentina/Buenos_Aires", "UTC", "GMT",
             "Asia/Calcutta", "Etc/GMT+5"}) {
        const auto zone = TimeZone::withIdentifier(name);
        ASSERT_TRUE(zone.has_value()) << name;
        EXPECT_EQ(zone->identifier(), name);
    }
    for (const auto* const name : {"", "Berlin", "europe/berlin", "Europe/Atlantis", "GMT+5",
             "GMT+05:00", "Etc/Unknown", "W. Europe Standard Time", "Europe/Berlin ", "\xFF\xFE"})
        EXPECT_FALSE(TimeZone::withIdentifier(name).has_value()) << name;
    EXPECT_FALSE(TimeZone::withIdentifier(std::string(1'000'000, 'x')).has_value());
    EXPECT_FALSE(TimeZone::withIdentifier(std::string_view("UTC\0", 4)).has_value());
}

TEST(TimeZone, OffsetsAreThoseOfICU)
{
    using Limits = std::numeric_limits<std::int64_t>;
    for (const auto* const name : {"UTC", "Europe/Berlin", "America/New_York",
             "Australia/Lord_Howe", "Asia/Kathmandu", "Africa/Casablanca"}) {
        const auto zone = TimeZone::withIdentifier(name).value();
        const std::unique_ptr<icu::TimeZone> opponent(icu::TimeZone::createTimeZone(name));
        for (std::int64_t time = -150'000 * 24 * hour; time < 50'000 * 24 * hour;
             time += 1'000 * hour + 1'234'567) {
            int32_t standard = 0;
            int32_t daylight = 0;
            UErrorCode status = U_ZERO_ERROR;
            opponent->getOffset(static_cast<UDate>(time), false, standard, daylight, status);
            ASSERT_EQ(zone.secondsFromGMT(Date::fromMillisecondsSince1970(time)),
                (standard + daylight) / 1000)
                << name << " " << time;
        }
        for (const auto time : {Limits::min(), Limits::max()}) {
            EXPECT_LT(std::abs(zone.secondsFromGMT(Date::fromMillisecondsSince1970(time))), 86'400);
            zone.dateFromLocalMilliseconds(time);
        }
    }
}

TEST(TimeZone, GapsMoveForwardAndRepeatsAreTheSecond)
{
    const auto zone = TimeZone::withIdentifier("Europe/Berlin").value();
    const auto at = [&](std::int64_t local) {
        return zone.dateFromLocalMilliseconds(local).millisecondsSince1970();
    };
    const std::int64_t gap = 1'711'852'200'000; // 2024-03-31T02:30
    EXPECT_EQ(at(gap), gap - hour); // 03:30 in summer time
    const std::int64_t repeat = 1'729'996'200'000; // 2024-10-27T02:30
    EXPECT_EQ(at(repeat), repeat - hour);
}

TEST(TimeZone, EqualWhenIdentifierAndRulesAre)
{
    EXPECT_EQ(TimeZone::UTC(), TimeZone::withIdentifier("UTC"));
    EXPECT_EQ(TimeZone::withIdentifier("Europe/Berlin"), TimeZone::withIdentifier("Europe/Berlin"));
    EXPECT_NE(TimeZone::withIdentifier("Europe/Berlin"), TimeZone::withIdentifier("Europe/Paris"));
    EXPECT_NE(TimeZone::withIdentifier("Asia/Calcutta"), TimeZone::withIdentifier("Asia/Kolkata"));
    EXPECT_EQ(TimeZone::fromVTimeZone(berlin, "Own"), TimeZone::fromVTimeZone(berlin, "Own"));
    EXPECT_NE(TimeZone::fromVTimeZone(berlin, "Europe/Berlin"),
        TimeZone::withIdentifier("Europe/Berlin"));
}

TEST(TimeZone, LocalIsTheZoneOfTheProcess)
{
    const std::unique_ptr<icu::TimeZone> before(icu::TimeZone::createDefault());
    icu::TimeZone::adoptDefault(icu::TimeZone::createTimeZone("Asia/Kathmandu"));
    EXPECT_EQ(TimeZone::local(), TimeZone::withIdentifier("Asia/Kathmandu"));
    icu::TimeZone::adoptDefault(icu::TimeZone::createTimeZone("GMT+5"));
    EXPECT_EQ(TimeZone::local().secondsFromGMT(), 5 * 3600);
    icu::TimeZone::setDefault(*before);
}

TEST(TimeZone, ReadsTheRulesOfAVTimeZone)
{
    const auto own = TimeZone::fromVTimeZone(berlin, "My zone");
    ASSERT_TRUE(own.has_value());
    EXPECT_EQ(own->identifier(), "My zone");
    const auto known = TimeZone::withIdentifier("Europe/Berlin").value();
    for (std::int64_t local = 1'672'531'200'000; local < 1'735'689'600'000; local += hour / 2) {
        ASSERT_EQ(own->dateFromLocalMilliseconds(local), known.dateFromLocalMilliseconds(local))
            << local;
        const auto date = Date::fromMillisecondsSince1970(local);
        ASSERT_EQ(own->secondsFromGMT(date), known.secondsFromGMT(date)) << local;
    }
}

TEST(TimeZone, ReadsRulesAsServersWriteThem)
{
    const auto zone = TimeZone::fromVTimeZone(
        "BEGIN:VTIMEZONE\nTZID:Own\nX-LIC-LOCATION:Europe/Berlin\nBEGIN:STANDARD\n"
        "DTSTART;X-A=\"a:b\":20200101T0000\n 00\nTZNAME;LANGUAGE=en:Some:name\n"
        "TZOFFSETFROM:+0053\n\t28\nTZOFFSETTO:-033000\n"
        "RDATE;VALUE=PERIOD:20210101T000000/P1D,20220101T000000Z\nEND:STANDARD\nEND:VTIMEZONE",
        "Own");
    ASSERT_TRUE(zone.has_value());
    EXPECT_EQ(zone->secondsFromGMT(Date::fromSecondsSince1970(0)), 53 * 60 + 28);
    EXPECT_EQ(zone->secondsFromGMT(Date::fromSecondsSince1970(1'704'067'200)), -3 * 3600 - 1800);
}

TEST(TimeZone, HostileRulesGiveNoZoneOrAnUsableOne)
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

    std::vector<std::string> texts {"", "BEGIN:VTIMEZONE", component(""),
        component("BEGIN:STANDARD\r\n"), component(manyRules), component(mostRules),
        component(std::string(10'000'000, 'x')), "\xFF\xFE" + berlin};
    for (const auto& lines : {fixed, manyDates, "DTSTART:19700101T000000\r\n"s,
             "DTSTART:19700101T000000\r\nTZOFFSETFROM:+9999\r\nTZOFFSETTO:-9999\r\n"s,
             "DTSTART:19700101T000000\0\r\n"s + fixed})
        texts.push_back(component(observance("STANDARD", lines)));
    for (const auto* const start : {"never", "00000000T000000", "19700101T000000",
             "99999999T999999\r\nRRULE:FREQ=YEARLY;BYMONTH=99",
             "19700101T000000\r\nRRULE:FREQ=YEARLY;BYMONTH=1;BYDAY=99SU",
             "19700101T000000\r\nRRULE:FREQ=SECONDLY;INTERVAL=0;COUNT=-1",
             "19700101T000000\r\nRRULE:FREQ=YEARLY;BYMONTH=1;BYMONTHDAY=1,2,3,4,5,6,7,8"})
        texts.push_back(component(observance("STANDARD", "DTSTART:"s + start + "\r\n" + fixed)));
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
