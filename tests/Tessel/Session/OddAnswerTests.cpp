#include "tests/Tessel/Session/World.h"

#include <gtest/gtest.h>

using namespace Tessel;
using namespace Tessel::Test;

// Servers that do otherwise than they were asked to.

namespace {

using Reply = FakeCalendarServer::Reply;

template <class T> std::string told(const Result<T>& result)
{
    return result ? "done" : std::string(nameOf(result.failure().kind)) + ": " + result.reason();
}

} // namespace

/// Xandikos makes a calendar that it refuses properties, and sets the others of a change.
TEST(OddAnswer, NamesThePropertiesThatANewCalendarHasNot)
{
    const World world;
    const std::string propstat = "<d:propstat><d:prop><i:calendar-color xmlns:i=\"x\"/></d:prop>"
                                 "<d:status>HTTP/1.1 409 No</d:status></d:propstat>";
    bool takesLater = true;
    world.server->setFault(
        [&](const URLRequest& request, const auto& apply) -> std::optional<Reply> {
            if (request.method == "MKCALENDAR") {
                apply();
                return Reply {.status = 201,
                    .body = "<c:mkcalendar-response xmlns:d=\"DAV:\" "
                            "xmlns:c=\"urn:ietf:params:xml:ns:caldav\">"
                        + propstat + "</c:mkcalendar-response>"};
            }
            if (request.method != "PROPPATCH" || takesLater) return std::nullopt;
            return Reply {.status = 207,
                .body = "<d:multistatus xmlns:d=\"DAV:\"><d:response><d:href>/x/</d:href>"
                    + propstat + "</d:response></d:multistatus>"};
        });
    const CalendarProperties properties {.displayName = "C", .color = "#123456"};
    EXPECT_EQ(told(wait(world.session->createCalendar(properties))), "done");
    EXPECT_EQ(world.server->asked("PROPPATCH"), 1u);
    takesLater = false;
    const auto made = told(wait(world.session->createCalendar(properties)));
    EXPECT_NE(made.find("The calendar was made at /home/"), made.npos) << made;
    EXPECT_NE(made.find("calendar-color"), made.npos) << made;
}

TEST(OddAnswer, FollowsNoRedirectOfAWriteToSomethingElse)
{
    for (const std::string target : {"/home/a/", "/home/b/", "/home/a/one.ics/", "/elsewhere/"}) {
        const World world;
        const auto held = world.fetch();
        auto& session = *world.session;
        const auto isRefused = [&](const auto& result, const std::string& name) {
            EXPECT_EQ(told(result).substr(0, 7), "refused") << name << " " << target;
        };
        world.server->setFault([&](const URLRequest& request, const auto&) -> std::optional<Reply> {
            if (request.method == "GET" || request.method == "PROPFIND") return std::nullopt;
            Reply reply {.status = 308};
            reply.headers.set("Location", target);
            return reply;
        });
        isRefused(wait(session.remove(held)), "remove");
        isRefused(wait(session.change(held, {.summary = "New"})), "change");
        isRefused(wait(session.move(held, "/home/b/")), "move");
        isRefused(wait(session.deleteCalendar("/home/private/")), "deleteCalendar");
        isRefused(wait(session.changeCalendar("/home/private/", {.color = "#123456"})), "change");
    }
}

/// Radicale takes an encoded destination for the name itself.
TEST(OddAnswer, FindsAMovedEventWhereTheServerHasPutIt)
{
    // The name that the server has, and how that is written in an address.
    const std::pair<std::string, std::string> arrivals[] {
        {"/home/b/u@h.ics", "/home/b/u%40h.ics"}, {"/home/b/u%40h.ics", "/home/b/u%2540h.ics"}, {}};
    for (const auto& [name, href] : arrivals) {
        const World world;
        world.server->put("/home/a/u@h.ics", eventText("u@h"));
        world.server->setFault(
            [&world, name = name](const URLRequest& request, const auto&) -> std::optional<Reply> {
                if (request.method != "MOVE") return std::nullopt;
                world.server->remove("/home/a/u@h.ics");
                if (!name.empty()) world.server->put(name, eventText("u@h"));
                return Reply {.status = 201};
            });
        const auto moved = wait(world.session->move(world.fetch("/home/a/u%40h.ics"), "/home/b/"));
        if (name.empty()) {
            EXPECT_TRUE(moved.failure().isUncertain);
            continue;
        }
        EXPECT_EQ(moved.value(), world.fetch(href));
    }
}
