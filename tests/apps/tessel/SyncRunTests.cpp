#include "apps/tessel/SyncRun.h"

#include "tests/support/ClientSession.h"
#include "tests/support/TemporaryDirectory.h"

#include <gtest/gtest.h>

#include <iostream>

namespace Tessel::App {
namespace {

/// A host whose account is known, on a server that plays a script at each sync.
class SyncRunTest : public testing::Test {
protected:
    SyncRunTest()
    {
        AccountStore store(options().storeFile);
        store.save({.identifier = "alice@server.example",
            .email = "alice",
            .serverURL = "https://server.example",
            .principalURL = "/principal/",
            .calendarHomeURL = "/home/"});
        testing::internal::CaptureStdout();
    }
    ~SyncRunTest() override
    {
        const auto printed = testing::internal::GetCapturedStdout();
        if (HasFailure()) std::cout << printed;
    }

    /// Syncs with a server that plays the exchanges of these titles in sync.script.
    SyncRun::Totals sync(const std::vector<std::string>& titles)
    {
        const auto all = Tessel::Test::loadScript("sync.script");
        Tessel::Test::Script script;
        for (const auto& title : titles)
            script.exchanges.push_back(all.only(title).exchanges.front());
        const auto network = std::make_shared<Tessel::Test::ScriptedTransport>(std::move(script));
        Host host(options(), "secret", network);
        return std::make_shared<SyncRun>(host)->run();
    }

    /// The names of the events that are held, with their tags.
    std::vector<std::string> held()
    {
        AccountStore store(options().storeFile);
        std::vector<std::string> names;
        for (const auto& calendar : store.calendars(store.account("alice@server.example"))) {
            for (const auto& event : store.events(calendar)) {
                names.push_back(event->uid + " " + event->eTag);
            }
        }
        std::sort(names.begin(), names.end());
        return names;
    }

    void syncTwoEvents() { sync({"calendar 1", "tags a1 b1", "events a1 b1"}); }

    using Names = std::vector<std::string>;

private:
    Options options() const
    {
        return {.server = "server.example",
            .user = "alice",
            .storeFile = (directory_.path() / "store.sqlite").string()};
    }

    const Tessel::Test::TemporaryDirectory directory_;
};

TEST_F(SyncRunTest, FollowsWhatChanged)
{
    syncTwoEvents();
    EXPECT_EQ(held(), (Names {"a 1", "b 1"}));
    EXPECT_EQ(sync({"calendar 1"}).calendarsEdited, 0U) << "unchanged, nothing more is asked";
    auto totals = sync({"calendar 2", "tags a2", "events a2"});
    EXPECT_EQ(totals.eventsEdited, 1U);
    EXPECT_EQ(totals.eventsRemoved, 1U);
    EXPECT_EQ(held(), Names {"a 2"});
    totals = sync({"calendar 3", "tags a2 c1", "events c1"});
    EXPECT_EQ(totals.eventsAdded, 1U);
    EXPECT_EQ(held(), (Names {"a 2", "c 1"}));
}

TEST_F(SyncRunTest, AnEmptiedCalendarIsEmptyHere)
{
    syncTwoEvents();
    const auto totals = sync({"calendar 2", "tags of nothing"});
    EXPECT_EQ(totals.eventsRemoved, 2U);
    EXPECT_TRUE(totals.failed.empty());
    EXPECT_EQ(held(), Names {});
    EXPECT_EQ(sync({"calendar 2"}).calendarsEdited, 0U) << "its tag is kept";
}

TEST_F(SyncRunTest, AFailedReplyIsNoDeletionAndIsTriedAgain)
{
    syncTwoEvents();
    const std::vector<std::string> failures[]
        = {{"calendar 2", "tags fail"}, {"calendar 2", "tags are no multistatus"},
            {"calendar 2", "tags while busy"}, {"calendar 2", "tags a2", "events fail"}};
    for (const auto& failure : failures) {
        const auto totals = sync(failure);
        EXPECT_EQ(totals.failed, Names {"Work"}) << failure.back();
        EXPECT_EQ(totals.calendarsEdited, 1U) << "each time anew";
        EXPECT_EQ(held(), (Names {"a 1", "b 1"}));
    }
    EXPECT_TRUE(sync({"calendar 2", "tags a2", "events a2"}).failed.empty());
    EXPECT_EQ(held(), Names {"a 2"});
}

TEST_F(SyncRunTest, AFailedListingEndsTheSyncWithTheServersLastWord)
{
    syncTwoEvents();
    try {
        sync({"no listing"});
        FAIL() << "a sync without a listing came to an end";
    } catch (const StepFailed& failed) {
        EXPECT_EQ(failed.step, "sync");
        EXPECT_EQ(failed.lastWord, "PROPFIND https://server.example/home/: 401");
    }
    EXPECT_EQ(held(), (Names {"a 1", "b 1"}));
}

} // namespace
} // namespace Tessel::App
