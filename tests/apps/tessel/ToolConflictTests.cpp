#include "tests/apps/tessel/ToolWorld.h"

#include <gtest/gtest.h>

#include <csignal>
#include <fstream>
#include <regex>

using namespace Tessel;
using namespace Tessel::Test;
using Reply = FakeCalendarServer::Reply;

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

TEST(ToolConflicts, GiveBothTexts)
{
    const Conflicts world;
    EXPECT_EQ(world.run({"sync"}).status, 5);
    const auto show = world.run({"pending", "show", "1"});
    expectParts(show.out, {"SUMMARY:Mine one\r\n", "SUMMARY:Theirs one\r\n", "!conflict"});
    expectParts(show.err, {"1, change Plan one: in conflict", "`tessel pending keep 1`", "yours:"});
    EXPECT_EQ(world.run({"pending", "show", "7"}).status, 1);
}

TEST(ToolWaiting, KeepsTheTextOfWhatCannotBeSent)
{
    const ToolWorld world;
    world.server->put("/home/b/one.ics", planned("one", "Old"));
    EXPECT_EQ(world.run({"sync"}).status, 0);
    for (const auto& command : {Words {"create", "b", "--summary", "New", "--start", "2027-03-02"},
             {"edit", "Old", "--summary", "Edited"}}) {
        Words words {"--offline", "event"};
        words.insert(words.end(), command.begin(), command.end());
        EXPECT_EQ(world.run(words).status, 0);
    }
    URLRequest removal(FakeCalendarServer::address + std::string("/home/b/"));
    removal.method = "DELETE";
    EXPECT_EQ(world.server->replyTo(removal).status, 204);
    world.server->setFault([](const URLRequest& request, const auto&) {
        const bool isThere = request.method == "PUT" && has(request.url(), "/home/b/");
        return isThere ? std::optional(Reply {.status = 409}) : std::nullopt;
    });
    EXPECT_EQ(world.run({"sync"}).status, 5);
    const auto show = world.run({"pending", "show", "1"});
    EXPECT_EQ(show.status, 0) << show.err;
    const auto file = world.folder() + "/kept.ics";
    std::ofstream(file, std::ios::binary) << show.out;
    EXPECT_EQ(world.run({"import", "a", file}).status, 0);
    expectParts(world.run({"events", "a"}).out, {"New"});
    expectParts(world.run({"--json", "pending", "list"}).out,
        {"\"text\":\"BEGIN:VCALENDAR", "SUMMARY:Edited"});
}

TEST(ToolWaiting, SaysUntilWhenNobodyKnows)
{
    const ToolWorld world;
    EXPECT_EQ(world.run({"sync"}).status, 0);
    const Words create {
        "--offline", "event", "create", "a", "--summary", "S", "--start", "2027-03-01"};
    EXPECT_EQ(world.run(create).status, 0);
    const auto answering = [&](Reply reply) {
        world.server->setFault([reply](const URLRequest& request, const auto&) {
            return request.method == "PUT" ? std::optional(reply) : std::nullopt;
        });
    };
    answering({.status = 401});
    EXPECT_EQ(world.run({"pending", "send"}).status, 1);
    expectParts(world.run({"pending"}).out, {"waits to be sent again: ", "401", "!1970"});

    answering({});
    std::chrono::milliseconds lived {};
    world.interrupt({"--timeout", "60", "pending", "send"}, SIGKILL, lived);
    for (const auto& command : {Words {"pending"}, {"pending", "drop", "1"}, {"pending", "send"}}) {
        const auto said = world.run(command).all();
        EXPECT_TRUE(std::regex_search(said, std::regex("on its way until [0-9:-]+"))) << said;
        if (command.size() > 1) expectParts(said, {"After that `tessel pending send` looks"});
    }
    expectParts(world.run({"pending", "drop", "1"}).err, {"cannot be given up"});
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
