#include "structure/SourceTree.h"

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

const std::string foundation = "Platform/Foundation/";
const Prefixes posix {"dlfcn.h", "fcntl.h", "link.h", "sys/", "unistd.h"};

const std::vector<Room> rooms {
    {foundation, {}, {"unicode/", "dlfcn.h", "link.h"}},
    {"Platform/Plinth/", {foundation}, {"spdlog/"}},
    {"Platform/Transport/", {foundation, "Platform/Plinth/"}, {"curl/"}},
    {"Platform/XML/", {foundation}, {"libxml/"}},
    {"icalendar/", {foundation}, posix},
    {"CaldavLibrary/Models/", {foundation}, {}},
    // What the rooms below the top floor use of it.
    {"CaldavLibrary/MRVUtilities.", {foundation, "icalendar/"}, {}},
    {"CaldavLibrary/MRVHeaderAuthorization.", {}, {}},
    {"CaldavLibrary/Extensions/",
        {"Platform/", "icalendar/", "CaldavLibrary/Models/", "CaldavLibrary/MRVUtilities.h"}, {}},
    {"CaldavLibrary/Parsers/",
        {"Platform/", "icalendar/", "CaldavLibrary/Models/", "CaldavLibrary/Extensions/"}, {}},
    {"CaldavLibrary/Operation/",
        {"Platform/", "icalendar/", "CaldavLibrary/Models/", "CaldavLibrary/Extensions/",
            "CaldavLibrary/Parsers/", "CaldavLibrary/MRVClient.h",
            "CaldavLibrary/MRVAccountInfoProvider.h", "CaldavLibrary/MRVHeaderAuthorization.h",
            "CaldavLibrary/MRVUtilities.h"},
        {}},
    {"CaldavLibrary/", {"Platform/", "icalendar/"}, {}},
    {"Tessel/", {"Platform/", "icalendar/", "CaldavLibrary/"}, {}},
    {"Resources/", {}, {"unicode/"}},
    {"apps/tessel/", {"Tessel/"}, {"CLI/", "sqlite3.h", "unistd.h"}},
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

/// Adds what `file` includes in circles to `circles`.
void findCircles(const std::string& file, std::vector<std::string>& path,
    std::set<std::string>& done, std::vector<std::string>& circles)
{
    if (std::find(path.begin(), path.end(), file) != path.end()) circles.push_back(file);
    if (!done.insert(file).second) return;
    path.push_back(file);
    for (const auto& include : tree().includes(file)) {
        if (include.isOwn) findCircles(include.name, path, done, circles);
    }
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
        {"CaldavLibrary/MRVClient.h", "CaldavLibrary/MRVAccountInfoProvider.h"}) {
        for (const auto& file : tree().reachable(header)) {
            EXPECT_TRUE(!file.starts_with("CaldavLibrary/Operation/")
                || file == "CaldavLibrary/Operation/MRVStatusCode.h")
                << header << " reaches " << file;
        }
    }
}

TEST(Layering, NoHeaderIncludesItself)
{
    std::vector<std::string> circles;
    std::vector<std::string> path;
    std::set<std::string> done;
    for (const auto& [file, includes] : tree().files())
        findCircles(file, path, done, circles);
    EXPECT_EQ(circles, std::vector<std::string>());
}
