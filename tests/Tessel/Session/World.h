#pragma once

#include "Tessel/Session/Session.h"
#include "tests/support/FakeCalendarServer.h"
#include "tests/support/ScriptedTransport.h"

#include <memory>
#include <string>

namespace Tessel::Test {

inline std::string eventText(const std::string& uid)
{
    return "BEGIN:VCALENDAR\r\nVERSION:2.0\r\nPRODID:-//a//b//EN\r\nBEGIN:VEVENT\r\nUID:" + uid
        + "\r\nDTSTAMP:20240101T000000Z\r\nDTSTART:20240506T100000Z\r\nDTEND:20240506T110000Z\r\n"
          "SUMMARY:Plan\r\nEND:VEVENT\r\nEND:VCALENDAR\r\n";
}

/// A server with two calendars, an event in the first, and a session of its account.
struct World {
    explicit World(SessionSettings settings = {})
        : use(server)
    {
        server->addCalendar("/home/a/");
        server->addCalendar("/home/b/");
        server->put("/home/a/one.ics", eventText("one"));
        session = open("alice", std::move(settings));
    }

    static Session::Opened open(const std::string& user, SessionSettings settings = {})
    {
        return wait(Session::open({.server = "server.example", .user = user}, Password {"secret"},
                        {}, std::move(settings)))
            .value();
    }
    Resource fetch(const std::string& place = "/home/a/one.ics") const
    {
        return wait(session->fetch(place)).value();
    }

    std::shared_ptr<FakeCalendarServer> server = std::make_shared<FakeCalendarServer>();
    UseTransport use;
    Session::Opened session;
};

} // namespace Tessel::Test
