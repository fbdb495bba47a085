#include "Tessel/CaldavLibrary/Parsers/MRVTimeZoneParser.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>

// What is read for which definition is in cases/zones.txt.

using namespace Tessel;

namespace {

std::string definition(const std::string& tzid, const std::string& lines = "")
{
    return "BEGIN:VTIMEZONE\r\nTZID:" + tzid + "\r\n" + lines + "END:VTIMEZONE\r\n";
}

} // namespace

TEST(MRVTimeZoneParser, FindsAZoneAsAParameterNamesIt)
{
    const auto zones = MRVTimeZoneParser(definition("Europe/Berlin")).parseTimeZones();
    EXPECT_EQ(zones->find("Europe/Berlin"), TimeZone::withIdentifier("Europe/Berlin"));
    EXPECT_EQ(zones->find("\"Europe/Berlin\""), TimeZone::withIdentifier("Europe/Berlin"));
    EXPECT_FALSE(zones->find("Other").has_value());
}

TEST(MRVTimeZoneParser, TakesAParsedCalendar)
{
    CGICalendar parsed;
    parsed.parseWithString(definition("Europe/Berlin"));
    parsed.objects.push_back(nullptr);
    EXPECT_EQ(MRVTimeZoneParser::timeZones(parsed).size(), 1u);
}

TEST(MRVTimeZoneParser, ManyDefinitionsCostLinearTime)
{
    std::string definitions;
    for (int i = 0; i < 20'000; ++i)
        definitions += definition("Zone " + std::to_string(i % 10'000), "X:y\r\n")
            + definition("/x" + std::to_string(i) + "/Europe/Berlin");
    EXPECT_EQ(MRVTimeZoneParser(definitions).parseTimeZones()->size(), 20'000u);
}

TEST(MRVTimeZoneParser, HowFarRulesReachCostsNothing)
{
    const auto secondsToRead = [](const char* start) {
        const std::string rules = "BEGIN:STANDARD\r\nTZOFFSETFROM:+0100\r\nTZOFFSETTO:+0200\r\n"
                                  "DTSTART:"
            + std::string(start)
            + "0101T000000\r\nRRULE:FREQ=YEARLY;UNTIL=20950101T000000Z\r\nEND:STANDARD\r\n";
        std::string definitions;
        for (int i = 0; i < 10'000; ++i)
            definitions += definition("Zone " + std::to_string(i), rules);
        const auto begin = std::chrono::steady_clock::now();
        const auto zones = MRVTimeZoneParser(definitions).parseTimeZones();
        for (const auto& [tzid, zone] : *zones)
            EXPECT_EQ(zone.secondsFromGMT(), 7200);
        const std::chrono::duration<double> taken = std::chrono::steady_clock::now() - begin;
        return taken.count();
    };
    double least = 1e9;
    for (int round = 0; round < 5 && least > 3; ++round)
        least = std::min(least, secondsToRead("1600") / secondsToRead("2024"));
    EXPECT_LT(least, 3);
}
