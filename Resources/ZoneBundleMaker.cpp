// Writes the zone bundle: one iCalendar file with one VTIMEZONE (RFC 5545, 3.6.5) for every zone of
// the system's time-zone database, named by the last component of the zone's identifier.
//
//   ZoneBundleMaker DIRECTORY
//
// docs/zone-bundle.md says which zone a file holds when several share its name, and how far back
// its rules go.

#include "Tessel/Platform/Foundation/Time/VTimeZoneWriter.h"
#include "Tessel/Platform/Foundation/Time/ZoneDatabase.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <map>
#include <set>
#include <sstream>
#include <stdexcept>
#include <string>
#include <string_view>
#include <tuple>

namespace {

namespace fs = std::filesystem;
using Tessel::ZoneDatabase;

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

/// The names that the database's source calls links to zones: "L Europe/Istanbul Asia/Istanbul".
/// Empty where the system has no source.
std::set<std::string> linkNames()
{
    std::set<std::string> links;
    std::ifstream source("/usr/share/zoneinfo/tzdata.zi");
    for (std::string line; std::getline(source, line);) {
        std::istringstream words(line);
        std::string kind;
        std::string target;
        std::string name;
        if (words >> kind >> target >> name && kind == "L") links.insert(name);
    }
    return links;
}

/// The zone whose key is least gets the file.
auto precedence(const std::string& identifier)
{
    static const auto links = linkNames();
    const auto components = std::count(identifier.begin(), identifier.end(), '/');
    return std::tuple(areaRank(identifier), -components, links.contains(identifier), identifier);
}

/// The identifier that each file's zone has, by the file's name.
std::map<std::string, std::string> chosenZones()
{
    std::map<std::string, std::string> chosen;
    for (const auto& identifier : ZoneDatabase::names()) {
        auto& holder = chosen[std::string(lastComponent(identifier))];
        if (holder.empty() || precedence(identifier) < precedence(holder)) holder = identifier;
    }
    if (chosen.empty()) throw std::runtime_error("the system has no time-zone database (tzdata)");
    return chosen;
}

std::string calendar(const std::string& identifier)
{
    return "BEGIN:VCALENDAR\r\nVERSION:2.0\r\nPRODID:-//Morv//Caldav//EN\r\n"
        + Tessel::writeVTimeZone(identifier, *ZoneDatabase::rules(identifier))
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
