// Writes the zone bundle: one iCalendar file with one VTIMEZONE (RFC 5545, 3.6.5) for every zone of
// ICU's time-zone database, named by the last component of the zone's identifier.
//
//   ZoneBundleMaker DIRECTORY
//
// docs/zone-bundle.md says which zone a file holds when several share its name, and how far back
// its rules go.

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <map>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>
#include <tuple>

#include <unicode/strenum.h>
#include <unicode/timezone.h>
#include <unicode/vtzone.h>

namespace {

namespace fs = std::filesystem;

void check(UErrorCode status, const std::string& what)
{
    if (U_FAILURE(status)) throw std::runtime_error(what + ": " + u_errorName(status));
}

std::string utf8(const icu::UnicodeString& text)
{
    std::string result;
    return text.toUTF8String(result);
}

std::string_view lastComponent(std::string_view identifier)
{
    return identifier.substr(identifier.rfind('/') + 1);
}

/// Places, then names without an area such as "UTC", then names kept for old programs.
int areaRank(std::string_view identifier)
{
    if (identifier.find('/') == identifier.npos) return 1;
    const auto area = identifier.substr(0, identifier.find('/'));
    constexpr std::string_view places[] = {"Africa", "America", "Antarctica", "Arctic", "Asia",
        "Atlantic", "Australia", "Europe", "Indian", "Pacific"};
    if (std::find(std::begin(places), std::end(places), area) != std::end(places)) return 0;
    if (area == "Etc") return 2;
    return area == "US" ? 3 : 4;
}

bool isLink(const std::string& identifier)
{
    icu::UnicodeString canonical;
    UErrorCode status = U_ZERO_ERROR;
    icu::TimeZone::getCanonicalID(icu::UnicodeString(identifier.c_str()), canonical, status);
    check(status, identifier);
    return utf8(canonical) != identifier;
}

/// The zone whose key is least gets the file.
auto precedence(const std::string& identifier)
{
    const auto components = std::count(identifier.begin(), identifier.end(), '/');
    return std::tuple(areaRank(identifier), -components, isLink(identifier), identifier);
}

/// The identifier that each file's zone has, by the file's name.
std::map<std::string, std::string> chosenZones()
{
    UErrorCode status = U_ZERO_ERROR;
    const std::unique_ptr<icu::StringEnumeration> identifiers(
        icu::TimeZone::createTimeZoneIDEnumeration(UCAL_ZONE_TYPE_ANY, nullptr, nullptr, status));
    check(status, "the list of zones");

    std::map<std::string, std::string> chosen;
    while (const auto* const next = identifiers->snext(status)) {
        const auto identifier = utf8(*next);
        if (identifier == UCAL_UNKNOWN_ZONE_ID) continue;
        auto& holder = chosen[std::string(lastComponent(identifier))];
        if (holder.empty() || precedence(identifier) < precedence(holder)) holder = identifier;
    }
    check(status, "the list of zones");
    return chosen;
}

int number(std::string_view digits)
{
    return std::stoi(std::string(digits));
}

/// "+0200" for "+020000": some readers know no seconds, and zones have none since 1972.
std::string_view shortOffset(std::string_view offset)
{
    return offset.size() == 7 && offset.ends_with("00") ? offset.substr(0, 5) : offset;
}

std::chrono::seconds seconds(std::string_view offset)
{
    const auto size = std::chrono::hours(number(offset.substr(1, 2)))
        + std::chrono::minutes(number(offset.substr(3, 2)));
    return offset.front() == '-' ? -size : size;
}

/// A local time such as "19950924T030000" as UTC.
std::string utcTime(std::string_view local, std::string_view offset)
{
    using namespace std::chrono;
    const sys_days day = year(number(local.substr(0, 4))) / number(local.substr(4, 2))
        / number(local.substr(6, 2));
    const auto time = day + hours(number(local.substr(9, 2))) + minutes(number(local.substr(11, 2)))
        + std::chrono::seconds(number(local.substr(13, 2))) - seconds(offset);
    const auto utcDay = floor<days>(time);
    const year_month_day date(utcDay);
    const hh_mm_ss clock(time - utcDay);
    char text[32];
    std::snprintf(text, sizeof text, "%04d%02u%02uT%02d%02d%02dZ", int(date.year()),
        unsigned(date.month()), unsigned(date.day()), int(clock.hours().count()),
        int(clock.minutes().count()), int(clock.seconds().count()));
    return text;
}

/// ICU's text as other readers want it: without the lines that only ICU reads and the names that it
/// makes up, and with ends of recurrences in UTC (RFC 5545, 3.3.10).
std::string plainVTimeZone(std::string_view text)
{
    std::string result;
    std::string offsetFrom;
    bool drop = false;
    while (!text.empty()) {
        const auto line = text.substr(0, text.find("\r\n"));
        text.remove_prefix(std::min(text.size(), line.size() + 2));
        const auto colon = std::min(line.find(':'), line.size());
        const auto name = line.substr(0, colon);
        std::string value(line.substr(std::min(colon + 1, line.size())));

        if (!line.starts_with(' ')) drop = name.starts_with("X-") || name == "TZNAME";
        if (drop) continue;
        if (name == "TZOFFSETTO" || name == "TZOFFSETFROM") value = shortOffset(value);
        if (name == "TZOFFSETFROM") offsetFrom = value;
        if (const auto until = value.find("UNTIL="); until != value.npos && !value.ends_with('Z'))
            value = value.substr(0, until + 6) + utcTime(value.substr(until + 6), offsetFrom);
        result.append(name).append(":").append(value).append("\r\n");
    }
    return result;
}

/// What holds from 1970 to the first change; ICU leaves it to be guessed.
std::string observanceOf1970(const icu::TimeZone& zone)
{
    int32_t standard = 0;
    int32_t daylight = 0;
    UErrorCode status = U_ZERO_ERROR;
    zone.getOffset(0, false, standard, daylight, status);
    check(status, "the offset of 1970");
    const int size = std::abs(standard + daylight) / 1000;
    char digits[16];
    std::snprintf(digits, sizeof digits, "%c%02d%02d%02d", standard + daylight < 0 ? '-' : '+',
        size / 3600, size / 60 % 60, size % 60);
    const std::string offset(shortOffset(digits));
    return std::string("BEGIN:STANDARD\r\nTZOFFSETTO:") + offset + "\r\nTZOFFSETFROM:" + offset
        + "\r\nDTSTART:19700101T000000\r\nEND:STANDARD\r\n";
}

std::string calendar(const std::string& identifier)
{
    constexpr UDate start1970 = 0;
    UErrorCode status = U_ZERO_ERROR;
    const std::unique_ptr<icu::VTimeZone> zone(
        icu::VTimeZone::createVTimeZoneByID(icu::UnicodeString(identifier.c_str())));
    if (!zone) throw std::runtime_error("no rules for " + identifier);
    icu::UnicodeString text;
    zone->write(start1970, text, status);
    check(status, identifier);
    auto definition = plainVTimeZone(utf8(text));
    if (definition.find("DTSTART:1970") == definition.npos)
        definition.insert(definition.find("BEGIN:", 1), observanceOf1970(*zone));
    return "BEGIN:VCALENDAR\r\nVERSION:2.0\r\nPRODID:-//Morv//Caldav//EN\r\n" + definition
        + "END:VCALENDAR\r\n";
}

void write(const fs::path& directory)
{
    fs::remove_all(directory);
    fs::create_directories(directory);
    for (const auto& [name, identifier] : chosenZones()) {
        std::ofstream file(directory / (name + ".ics"), std::ios::binary);
        file << calendar(identifier);
        file.close();
        if (!file) throw std::runtime_error("cannot write " + name + ".ics");
    }
}

} // namespace

int main(int argc, char** argv)
{
    if (argc != 2) {
        std::cerr << "usage: ZoneBundleMaker DIRECTORY\n";
        return 2;
    }
    try {
        write(argv[1]);
    } catch (const std::exception& error) {
        std::cerr << "ZoneBundleMaker: " << error.what() << "\n";
        return 1;
    }
}
