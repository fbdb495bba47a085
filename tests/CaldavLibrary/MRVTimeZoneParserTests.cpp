#include "CaldavLibrary/Parsers/MRVTimeZoneParser.h"

#include <gtest/gtest.h>

using namespace Tessel;

namespace {

const Date summer = Date::fromSecondsSince1970(1'719'792'000); // 2024-07-01
const Date winter = Date::fromSecondsSince1970(1'704'067'200); // 2024-01-01

/// Seven hours in winter, eight and a half in summer: no zone of the platform has these rules.
const std::string ownRules
    = "BEGIN:STANDARD\r\nDTSTART;X-A=b:16010101T030000\r\nTZNAME:Some: name\r\n"
      "RRULE:FREQ=YEARLY;BYDAY=-1SU;\r\n BYMONTH=10\r\n"
      "TZOFFSETFROM:+0830\r\nTZOFFSETTO:+0700\r\nEND:STANDARD\r\n"
      "BEGIN:DAYLIGHT\r\nDTSTART:16010101T020000\r\nRRULE:FREQ=YEARLY;BYDAY=-1SU;BYMONTH=3\r\n"
      "TZOFFSETFROM:+0700\r\nTZOFFSETTO:+0830\r\nEND:DAYLIGHT\r\n";

std::string definition(const std::string& tzid, const std::string& rules = ownRules)
{
    return "BEGIN:VTIMEZONE\r\nTZID:" + tzid + "\r\n" + rules + "END:VTIMEZONE\r\n";
}

std::string calendar(const std::string& components)
{
    return "BEGIN:VCALENDAR\r\nVERSION:2.0\r\n" + components
        + "BEGIN:VEVENT\r\nUID:1\r\nEND:VEVENT\r\nEND:VCALENDAR\r\n";
}

std::optional<MRVTimeZoneParser::Zones> parse(const std::string& text)
{
    return MRVTimeZoneParser(text).parseTimeZones();
}

std::string identifierFor(const std::string& tzid, const std::string& rules = "")
{
    const auto zones = parse(calendar(definition(tzid, rules)));
    return zones ? zones->begin()->second.identifier() : "none";
}

} // namespace

TEST(MRVTimeZoneParser, PrefersThePlatformsZone)
{
    EXPECT_EQ(identifierFor("Europe/Berlin", ownRules), "Europe/Berlin");
    EXPECT_EQ(parse(calendar(definition("Europe/Berlin")))->find("Europe/Berlin"),
        TimeZone::withIdentifier("Europe/Berlin"));
    EXPECT_EQ(identifierFor("W. Europe Standard Time", ownRules), "Europe/Berlin");
    EXPECT_EQ(identifierFor("Eastern Standard Time"), "America/New_York");
    EXPECT_EQ(identifierFor("\"Europe/Berlin\""), "Europe/Berlin");
    EXPECT_EQ(identifierFor("Europe/\r\n Berlin"), "Europe/Berlin");
}

TEST(MRVTimeZoneParser, ReadsTheRulesOfUnknownZones)
{
    const auto zones = parse(calendar(definition("Customized Time Zone")));
    ASSERT_TRUE(zones.has_value());
    const auto zone = zones->find("Customized Time Zone");
    ASSERT_TRUE(zone.has_value());
    EXPECT_EQ(zone->identifier(), "Customized Time Zone");
    EXPECT_EQ(zone->secondsFromGMT(winter), 7 * 3600);
    EXPECT_EQ(zone->secondsFromGMT(summer), 8 * 3600 + 1800);
    EXPECT_EQ(zones->find("\"Customized Time Zone\""), zone) << "as a parameter has it";
    EXPECT_FALSE(zones->find("Other").has_value());
}

TEST(MRVTimeZoneParser, FallsBackToTheIdentifierAtTheEnd)
{
    EXPECT_EQ(identifierFor("/freeassociation.sourceforge.net/Europe/Berlin"), "Europe/Berlin");
    EXPECT_EQ(identifierFor("/mozilla.org/20050126_1/Europe/Berlin"), "Europe/Berlin");
    EXPECT_EQ(identifierFor("/x/America/Argentina/Buenos_Aires"), "America/Argentina/Buenos_Aires");
    EXPECT_EQ(identifierFor("/mozilla.org/20050126_1/Europe/Berlin", ownRules),
        "/mozilla.org/20050126_1/Europe/Berlin");
    EXPECT_EQ(identifierFor("/"), "none");
    EXPECT_EQ(identifierFor("Nowhere/Europe/"), "none");
}

TEST(MRVTimeZoneParser, KeepsTheOrderOfTheText)
{
    const auto zones = parse(calendar(definition("Pacific/Apia") + definition("Europe/Berlin", "")
        + definition("Unreadable", "") + definition("Asia/Kathmandu")
        + definition("Pacific/Apia")));
    ASSERT_TRUE(zones.has_value());
    std::vector<std::string> order;
    for (const auto& [tzid, zone] : *zones)
        order.push_back(tzid);
    EXPECT_EQ(
        order, (std::vector<std::string> {"Pacific/Apia", "Europe/Berlin", "Asia/Kathmandu"}));
}

TEST(MRVTimeZoneParser, NoneWhenNothingCanBeRead)
{
    for (const auto& text : {std::string(), std::string("garbage"), calendar(""),
             calendar("BEGIN:VTIMEZONE\r\n" + ownRules + "END:VTIMEZONE\r\n"),
             calendar(definition("", "")), calendar(definition("Unknown", "")),
             calendar(definition("Unknown", "BEGIN:STANDARD\r\nEND:STANDARD\r\n")),
             calendar("BEGIN:VEVENT\r\n" + definition("Europe/Berlin") + "END:VEVENT\r\n")})
        EXPECT_FALSE(parse(text).has_value()) << text;
    EXPECT_TRUE(parse(definition("Europe/Berlin")).has_value()) << "without a calendar around it";
}

TEST(MRVTimeZoneParser, TakesAParsedCalendar)
{
    CGICalendar parsed;
    parsed.parseWithString(calendar(definition("Europe/Berlin")));
    EXPECT_EQ(MRVTimeZoneParser::timeZones(parsed).size(), 1u);
    parsed.objects.push_back(nullptr);
    EXPECT_EQ(MRVTimeZoneParser::timeZones(parsed).size(), 1u);
}

TEST(MRVTimeZoneParser, ManyDefinitionsCostLinearTime)
{
    std::string definitions;
    for (int i = 0; i < 20'000; ++i)
        definitions += definition("Zone " + std::to_string(i % 10'000), "X:y\r\n")
            + definition("/x" + std::to_string(i) + "/Europe/Berlin", "");
    EXPECT_EQ(parse(calendar(definitions))->size(), 20'000u);
}
