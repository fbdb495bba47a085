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
    {foundation + "Web/", {base, text}, {}},
    {foundation + "Operations/", {base}, {}},
    {"Tessel/Platform/Plinth/", {foundation}, {"spdlog/"}},
    {"Tessel/Platform/Transport/", {foundation, "Tessel/Platform/Plinth/"}, {"curl/"}},
    {"Tessel/Platform/XML/", {foundation}, {"libxml/"}},
    {"Tessel/icalendar/", {foundation}, {}},
    {"Tessel/CaldavLibrary/Models/", {foundation}, {}},
    // What the rooms below the top floor use of it.
    {"Tessel/CaldavLibrary/MRVUtilities.", {foundation, "Tessel/icalendar/"}, {}},
    {"Tessel/CaldavLibrary/MRVHeaderAuthorization.", {}, {}},
    {"Tessel/CaldavLibrary/Extensions/",
        {"Tessel/Platform/", "Tessel/icalendar/", "Tessel/CaldavLibrary/Models/",
            "Tessel/CaldavLibrary/MRVUtilities.h"},
        {}},
    {"Tessel/CaldavLibrary/Parsers/",
        {"Tessel/Platform/", "Tessel/icalendar/", "Tessel/CaldavLibrary/Models/",
            "Tessel/CaldavLibrary/Extensions/"},
        {}},
    {"Tessel/CaldavLibrary/Operation/",
        {"Tessel/Platform/", "Tessel/icalendar/", "Tessel/CaldavLibrary/Models/",
            "Tessel/CaldavLibrary/Extensions/", "Tessel/CaldavLibrary/Parsers/",
            "Tessel/CaldavLibrary/MRVClient.h", "Tessel/CaldavLibrary/MRVAccountInfoProvider.h",
            "Tessel/CaldavLibrary/MRVHeaderAuthorization.h", "Tessel/CaldavLibrary/MRVUtilities.h"},
        {}},
    {"Tessel/CaldavLibrary/", {"Tessel/Platform/", "Tessel/icalendar/"}, {}},
    {"Tessel/Tessel.h", {"Tessel/"}, {}},
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
        {"Tessel/CaldavLibrary/MRVClient.h", "Tessel/CaldavLibrary/MRVAccountInfoProvider.h"}) {
        for (const auto& file : tree().reachable(header)) {
            EXPECT_TRUE(!file.starts_with("Tessel/CaldavLibrary/Operation/")
                || file == "Tessel/CaldavLibrary/Operation/MRVStatusCode.h")
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
