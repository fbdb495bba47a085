#include "Tessel/Platform/Foundation/Time/TimeZone.h"

#include <gtest/gtest.h>

#include <unicode/timezone.h>

#include <limits>
#include <memory>
#include <string>

using namespace Tessel;

namespace {

constexpr std::int64_t hour = 3'600'000;

} // namespace

TEST(TimeZone, KnowsTheZonesOfTheDatabaseOnly)
{
    for (const auto* const name : {"Europe/Berlin", "America/Argentina/Buenos_Aires", "UTC", "GMT",
             "Asia/Calcutta", "Etc/GMT+5"}) {
        const auto zone = TimeZone::withIdentifier(name);
        ASSERT_TRUE(zone.has_value()) << name;
        EXPECT_EQ(zone->identifier(), name);
    }
    for (const auto* const name :
        {"", "Berlin", "europe/berlin", "Europe/Atlantis", "GMT+5", "GMT+05:00", "Etc/Unknown",
            "W. Europe Standard Time", "Europe/Berlin ", "\xFF\xFE", "BST", "AST", "IST", "Europe",
            "Europe/", "/Europe/Berlin", "../zoneinfo/UTC", "Europe/../UTC", "posix/UTC",
            "right/UTC", "localtime", "posixrules", "tzdata.zi", "leapseconds", "zone.tab"})
        EXPECT_FALSE(TimeZone::withIdentifier(name).has_value()) << name;
    EXPECT_FALSE(TimeZone::withIdentifier(std::string(1'000'000, 'x')).has_value());
    EXPECT_FALSE(TimeZone::withIdentifier(std::string_view("UTC\0", 4)).has_value());
}

TEST(TimeZone, AnyMomentHasAnOffset)
{
    using Limits = std::numeric_limits<std::int64_t>;
    for (const auto* const name : {"UTC", "Europe/Berlin", "Asia/Kathmandu"}) {
        const auto zone = TimeZone::withIdentifier(name).value();
        for (const auto time : {Limits::min(), Limits::max(), std::int64_t(-1)}) {
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
    const std::string always = "BEGIN:STANDARD\nDTSTART:19700101T000000\nTZOFFSETFROM:+0100\n"
                               "TZOFFSETTO:+0100\nEND:STANDARD\n";
    EXPECT_EQ(TimeZone::fromVTimeZone(always, "Own"), TimeZone::fromVTimeZone(always, "Own"));
    EXPECT_NE(TimeZone::fromVTimeZone(always, "Own"), TimeZone::fromVTimeZone(always, "Other"));
    EXPECT_NE(TimeZone::fromVTimeZone(always, "Europe/Berlin"),
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

TEST(TimeZone, WindowsNamesAreThoseOfZones)
{
    EXPECT_EQ(TimeZone::withWindowsName("W. Europe Standard Time")->identifier(), "Europe/Berlin");
    EXPECT_EQ(TimeZone::withWindowsName("India Standard Time")->secondsFromGMT(), 19'800);
    for (const auto* const name : {"", "Europe/Berlin", "w. europe standard time", "\xFF"})
        EXPECT_FALSE(TimeZone::withWindowsName(name).has_value()) << name;
}
