#include "Tessel/CaldavLibrary/Parsers/MRVTimeZoneParser.h"

#include <gtest/gtest.h>

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
