#include "Tessel/CaldavLibrary/MRVUtilities.h"

#include "Tessel/Platform/Foundation/Files/Bundle.h"

#include <gtest/gtest.h>

#include <fstream>
#include <sstream>

using namespace Tessel;

namespace {

std::string tzidOfDefinition(const char* identifier)
{
    const auto definitions = MRVUtilities::vTimeZone(TimeZone::withIdentifier(identifier).value());
    if (definitions.size() != 1) return std::to_string(definitions.size()) + " definitions";
    return std::string(definitions[0]->propertyValueForName("TZID").value_or("no TZID"));
}

std::string contentOf(const std::filesystem::path& path)
{
    std::ostringstream text;
    text << std::ifstream(path, std::ios::binary).rdbuf();
    return text.str();
}

} // namespace

TEST(MRVUtilities, MakesAuthorizationValues)
{
    EXPECT_EQ(MRVUtilities::basicAuthString("u", "p"), "Basic dTpw");
    EXPECT_EQ(MRVUtilities::basicAuthString("j\xC3\xB6", ":"), "Basic asO2Ojo=");
    EXPECT_EQ(MRVUtilities::bearerTokenAuthString("t k"), "Bearer t k");
}

TEST(MRVUtilities, FindsDefinitionsByTheLastComponent)
{
    for (const auto* const name : {"Europe/Berlin", "America/New_York", "UTC", "GMT",
             "America/Argentina/Buenos_Aires", "Asia/Calcutta", "Asia/Singapore", "Europe/Istanbul",
             "America/Kentucky/Louisville", "America/Indiana/Indianapolis", "Australia/West"})
        EXPECT_EQ(tzidOfDefinition(name), name);
    EXPECT_EQ(tzidOfDefinition("Brazil/West"), "Australia/West") << "a shared name";
    EXPECT_EQ(tzidOfDefinition("Asia/Istanbul"), "Europe/Istanbul");
}

TEST(MRVUtilities, NoDefinitionOfUnknownZones)
{
    const std::string rules = "BEGIN:VTIMEZONE\nBEGIN:STANDARD\nDTSTART:19700101T000000\n"
                              "TZOFFSETFROM:+0100\nTZOFFSETTO:+0100\nEND:STANDARD\nEND:VTIMEZONE\n";
    for (const auto* const name : {"Nowhere", "", "/", "..", "../../etc/passwd", "Berlin.ics"}) {
        const auto zone = TimeZone::fromVTimeZone(rules, name);
        ASSERT_TRUE(zone.has_value());
        EXPECT_TRUE(MRVUtilities::vTimeZone(*zone).empty()) << name;
    }
}

TEST(ZoneBundle, EveryDefinitionHasTheOffsetsOfItsZone)
{
    const auto directory = Bundle::library().bundle("ZoneinfoBundle.bundle").directory();
    ASSERT_TRUE(std::filesystem::is_directory(directory)) << directory;
    int files = 0;
    for (const auto& entry : std::filesystem::directory_iterator(directory)) {
        const auto text = contentOf(entry.path());
        const auto begin = text.find("TZID:") + 5;
        const auto identifier = text.substr(begin, text.find("\r\n", begin) - begin);
        const auto known = TimeZone::withIdentifier(identifier);
        ASSERT_TRUE(known.has_value()) << identifier;
        const auto own = TimeZone::fromVTimeZone(text, identifier);
        ASSERT_TRUE(own.has_value()) << identifier;

        constexpr std::int64_t day = 86'400;
        for (std::int64_t time = day; time < 80 * 365 * day; time += 9 * day + 3'600) {
            const auto date = Date::fromSecondsSince1970(time);
            ASSERT_EQ(own->secondsFromGMT(date), known->secondsFromGMT(date))
                << identifier << " " << time;
        }
        ++files;
    }
    EXPECT_GT(files, 400);
}
