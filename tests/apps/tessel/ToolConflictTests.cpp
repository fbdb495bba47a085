#include "tests/apps/tessel/ToolWorld.h"

#include <gtest/gtest.h>

using namespace Tessel;
using namespace Tessel::Test;

namespace {

std::string planned(
    const std::string& uid, const std::string& summary, const std::string& more = {})
{
    return eventWith(uid, "DTSTART:20270301T100000Z\r\nSUMMARY:" + summary + "\r\n" + more);
}

/// Two events that were changed here, offline, and otherwise by others.
struct Conflicts : ToolWorld {
    Conflicts()
    {
        for (const std::string name : {"one", "two"})
            server->put("/home/a/" + name + ".ics", planned(name, "Plan " + name));
        EXPECT_EQ(run({"sync"}).status, 0);
        for (const std::string name : {"one", "two"}) {
            EXPECT_EQ(
                run({"--offline", "event", "edit", "Plan " + name, "--summary", "Mine " + name})
                    .status,
                0);
            server->put("/home/a/" + name + ".ics",
                planned(name, "Theirs " + name, "LOCATION:Room\\, 4\r\n"));
        }
    }
};

} // namespace

TEST(ToolConflicts, ShowBothVersionsWhereverSomebodyDecides)
{
    const Conflicts world;
    const auto sync = world.run({"sync"});
    EXPECT_EQ(sync.status, 5) << sync.all();
    const auto pending = world.run({"pending"});
    for (const auto& said : {sync.err, pending.out}) {
        expectParts(said,
            {"1, change Plan one", "yours: summary: Mine one\n",
                "theirs: summary: Theirs one; location: Room, 4\n", "`tessel pending keep 1`",
                "`tessel pending drop 1` leaves theirs", "2, change Plan two", "!BEGIN:"});
    }
    const auto json = world.run({"--json", "pending"}).out;
    expectParts(json, {"\"mine\":\"BEGIN:", "\"what\":\"summary: Mine"});
}

TEST(ToolConflicts, TellWhatOneDecisionCameTo)
{
    const Conflicts world;
    EXPECT_EQ(world.run({"sync"}).status, 5);
    const auto offline = world.run({"--offline", "pending", "keep", "1"});
    expectParts(offline.out, {"kept: change Plan one"});
    const auto keep = world.run({"pending", "keep", "1"});
    EXPECT_EQ(keep.status, 0) << keep.all();
    expectParts(keep.all(), {"sent: change Mine", "1 more waits", "!change Plan two"});
    EXPECT_EQ(world.run({"pending", "drop", "2"}).status, 0);
    expectParts(*world.server->text("/home/a/one.ics"), {"SUMMARY:Mine", "LOCATION:Room"});
    expectParts(*world.server->text("/home/a/two.ics"), {"SUMMARY:Theirs two"});
}

TEST(ToolConflicts, TellChangesOfOneEventApart)
{
    const ToolWorld world;
    world.server->put("/home/a/one.ics", planned("one", "Plan"));
    EXPECT_EQ(world.run({"sync"}).status, 0);
    for (const auto& edit : {Words {"--location", "Room 4"}, {"--start", "2027-03-02T09:00"}}) {
        Words words {"--offline", "event", "edit", "Plan"};
        words.insert(words.end(), edit.begin(), edit.end());
        EXPECT_EQ(world.run(words).status, 0);
    }
    expectParts(world.run({"pending"}).out, {"location: Room 4", "start: 2027-03-02"});
    EXPECT_EQ(world.run({"--offline", "event", "delete", "Plan"}).status, 0);
    // What is gone is still known by its name.
    expectParts(world.run({"sync"}).out, {"sent: delete Plan", "!one.ics"});
}
