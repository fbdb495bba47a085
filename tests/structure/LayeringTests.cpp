#include "tests/structure/SourceTree.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <set>

using namespace Tessel::Test;

namespace {

const SourceTree& tree()
{
    static const SourceTree tree(TESSEL_SOURCE_DIRECTORY);
    return tree;
}

using Prefixes = std::vector<std::string>;

/// Files whose path starts with `prefix`, and the prefixes of what they may include beside each
/// other and the standard library. The first room that fits a file is its room.
struct Room {
    std::string prefix;
    Prefixes own;
    Prefixes foreign;
};

const std::string foundation = "Tessel/Platform/Foundation/";
const std::string base = foundation + "Base/";
const std::string text = foundation + "Text/";
const std::string files = foundation + "Files/";
const Prefixes posix {"dlfcn.h", "fcntl.h", "link.h", "sys/", "unistd.h"};

const std::vector<Room> rooms {
    {base, {}, {}},
    {text, {base}, {}},
    {files, {base, text}, posix},
    {foundation + "Time/", {base, text, files}, {"unicode/"}},
    {foundation + "Web/", {base, text}, {"arpa/"}},
    {foundation + "Operations/", {base}, {}},
    {"Tessel/Platform/Plinth/", {foundation}, {"spdlog/"}},
    {"Tessel/Platform/Transport/", {foundation, "Tessel/Platform/Plinth/"}, {"curl/", "openssl/"}},
    {"Tessel/Platform/XML/", {foundation}, {"libxml/"}},
    {"Tessel/icalendar/", {foundation}, {}},
    {"Tessel/CaldavLibrary/Models/", {foundation}, {}},
    {"Tessel/CaldavLibrary/Extensions/",
        {"Tessel/Platform/", "Tessel/icalendar/", "Tessel/CaldavLibrary/Models/"}, {}},
    {"Tessel/CaldavLibrary/Parsers/",
        {"Tessel/Platform/", "Tessel/icalendar/", "Tessel/CaldavLibrary/Models/",
            "Tessel/CaldavLibrary/Extensions/"},
        {}},
    {"Tessel/CaldavLibrary/Operation/",
        {"Tessel/Platform/", "Tessel/icalendar/", "Tessel/CaldavLibrary/Models/",
            "Tessel/CaldavLibrary/Extensions/", "Tessel/CaldavLibrary/Parsers/",
            "Tessel/CaldavLibrary/MRVClient.h", "Tessel/CaldavLibrary/MRVAccountInfoProvider.h"},
        {}},
    {"Tessel/CaldavLibrary/", {"Tessel/Platform/", "Tessel/icalendar/"}, {}},
    {"Tessel/Session/Outcome/", {base, foundation + "Operations/"}, {}},
    {"Tessel/Session/Exchange/",
        {"Tessel/Platform/", "Tessel/CaldavLibrary/", "Tessel/Session/Outcome/"}, {}},
    {"Tessel/Session/Opening/",
        {"Tessel/Platform/", "Tessel/Session/Outcome/", "Tessel/Session/Exchange/"},
        {"ares.h", "poll.h"}},
    {"Tessel/Session/Text/",
        {"Tessel/Session/Outcome/", base, foundation + "Text/", foundation + "Time/"},
        {"libical/"}},
    {"Tessel/Session/Recurrence/",
        {"Tessel/Session/Outcome/", "Tessel/Session/Text/", base, foundation + "Time/"},
        {"libical/"}},
    {"Tessel/Session/Store/",
        {"Tessel/Session/Outcome/", "Tessel/Session/Recurrence/", base, foundation + "Web/"},
        {"SQLiteCpp/", "sqlite3.h", "fcntl.h", "sys/", "unistd.h"}},
    {"Tessel/Session/Calendars/",
        {"Tessel/Platform/", "Tessel/Session/Outcome/", "Tessel/Session/Exchange/",
            "Tessel/Session/Store/"},
        {}},
    {"Tessel/Session/Sync/",
        {"Tessel/Platform/", "Tessel/Session/Outcome/", "Tessel/Session/Exchange/",
            "Tessel/Session/Store/", "Tessel/Session/Calendars/"},
        {}},
    {"Tessel/Session/Writes/",
        {"Tessel/Platform/", "Tessel/Session/Outcome/", "Tessel/Session/Exchange/",
            "Tessel/Session/Text/", "Tessel/Session/Recurrence/", "Tessel/Session/Store/"},
        {}},
    {"Tessel/Session/Outbox/",
        {foundation, "Tessel/Session/Outcome/", "Tessel/Session/Exchange/", "Tessel/Session/Text/",
            "Tessel/Session/Recurrence/", "Tessel/Session/Store/", "Tessel/Session/Writes/"},
        {}},
    {"Tessel/Session/Sharing/",
        {"Tessel/Platform/", "Tessel/CaldavLibrary/Extensions/", "Tessel/Session/Outcome/",
            "Tessel/Session/Exchange/", "Tessel/Session/Opening/"},
        {}},
    {"Tessel/Session/", {"Tessel/"}, {}},
    {"Tessel/Tessel.h", {"Tessel/"}, {}},
    {"Tessel/TesselSession.h", {"Tessel/"}, {}},
    {"Resources/", {foundation + "Time/"}, {}},
    {"apps/tessel/output/", {"Tessel/"}, {"CLI/", "locale.h", "nlohmann/", "sys/", "unistd.h"}},
    {"apps/tessel/accounts/", {"Tessel/", "apps/tessel/output/"},
        {"libsecret/", "fcntl.h", "sys/", "termios.h", "unistd.h"}},
    {"apps/tessel/commands/", {"Tessel/", "apps/tessel/output/", "apps/tessel/accounts/"},
        {"CLI/", "fcntl.h", "signal.h", "unicode/", "unistd.h"}},
    {"apps/tessel/", {"Tessel/"}, {"fcntl.h", "unistd.h"}},
    {"examples/", {"Tessel/"}, {}},
};

const Room* roomOf(const std::string& file)
{
    const auto room = std::find_if(rooms.begin(), rooms.end(),
        [&](const auto& room) { return file.starts_with(room.prefix); });
    return room == rooms.end() ? nullptr : &*room;
}

bool startsWithOneOf(const std::string& name, const Prefixes& prefixes)
{
    return std::any_of(prefixes.begin(), prefixes.end(),
        [&](const auto& prefix) { return name.starts_with(prefix); });
}

bool mayInclude(const Room& room, const SourceTree::Include& include)
{
    if (include.isOwn) {
        return include.name.starts_with(room.prefix) || startsWithOneOf(include.name, room.own);
    }
    return isStandard(include) || startsWithOneOf(include.name, room.foreign);
}

/// Units, a header with its source each, and the units that these include.
using Units = std::map<std::string, std::set<std::string>>;

Units units()
{
    const auto unitOf = [](const std::string& file) { return file.substr(0, file.rfind('.')); };
    Units units;
    for (const auto& [file, includes] : tree().files()) {
        auto& included = units[unitOf(file)];
        for (const auto& include : includes) {
            if (include.isOwn && unitOf(include.name) != unitOf(file))
                included.insert(unitOf(include.name));
        }
    }
    return units;
}

/// Adds every way from `unit` back to a unit of `path`.
void findCircles(const Units& units, const std::string& unit, std::vector<std::string>& path,
    std::set<std::string>& done, std::vector<std::vector<std::string>>& circles)
{
    const auto start = std::find(path.begin(), path.end(), unit);
    if (start != path.end()) circles.emplace_back(start, path.end());
    if (!done.insert(unit).second) return;
    path.push_back(unit);
    for (const auto& included : units.at(unit))
        findCircles(units, included, path, done, circles);
    path.pop_back();
}

} // namespace

TEST(Layering, NoRoomIncludesWhatLiesAboveIt)
{
    for (const auto& room : rooms) {
        const auto lives = [&](const auto& file) { return roomOf(file.first) == &room; };
        EXPECT_TRUE(std::any_of(tree().files().begin(), tree().files().end(), lives))
            << room.prefix;
    }
    for (const auto& [file, includes] : tree().files()) {
        const auto* room = roomOf(file);
        if (!room) continue;
        for (const auto& include : includes)
            EXPECT_TRUE(mayInclude(*room, include)) << file << " includes " << include.name;
    }
}

TEST(Layering, WhatOperationsHoldKnowsNoOperation)
{
    for (const auto* header :
        {"Tessel/CaldavLibrary/MRVClient.h", "Tessel/CaldavLibrary/MRVAccountInfoProvider.h"}) {
        for (const auto& file : tree().reachable(header)) {
            EXPECT_TRUE(!file.starts_with("Tessel/CaldavLibrary/Operation/")
                || file == "Tessel/CaldavLibrary/Operation/MRVStatusCode.h")
                << header << " reaches " << file;
        }
    }
}

TEST(Layering, NoUnitsIncludeEachOtherInACircle)
{
    const auto all = units();
    std::vector<std::vector<std::string>> circles;
    std::vector<std::string> path;
    std::set<std::string> done;
    for (const auto& [unit, included] : all)
        findCircles(all, unit, path, done, circles);
    for (const auto& circle : circles)
        ADD_FAILURE() << testing::PrintToString(circle);
}
