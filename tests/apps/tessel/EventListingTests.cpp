#include "apps/tessel/EventListing.h"

#include "apps/tessel/WhatIsLost.h"
#include "tests/support/ClientSession.h"
#include "tests/support/TemporaryDirectory.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace Tessel::App {

TEST(RemoteEvent, IsTheSeriesWithoutItsChangedInstances)
{
    const auto network = std::make_shared<Tessel::Test::ScriptedTransport>(
        Tessel::Test::loadScript("series.script"));
    const Tessel::Test::TemporaryDirectory directory;
    Host host({.server = "server.example",
                  .user = "alice",
                  .storeFile = (directory.path() / "store.sqlite").string()},
        "secret", network);
    host.store().save({.identifier = "alice@server.example",
        .email = "alice",
        .serverURL = "https://server.example",
        .calendarHomeURL = "/home/"});

    const auto calendar = Tessel::Test::calendarAt("/home/work/", host.account());
    const auto [event, text] = remoteEvent(host, calendar, "/home/work/series.ics");
    EXPECT_EQ(event->summary, "Every day");
    EXPECT_EQ(event->href, "/home/work/series.ics");
    EXPECT_EQ(event->eTag, "\"1\"");
    EXPECT_NE(text.find("That day"), text.npos);
    const auto lost = whatIsLost(text, *event);
    EXPECT_EQ(std::count(lost.begin(), lost.end(), "RECURRENCE-ID"), 1);
}

} // namespace Tessel::App
