#include "Tessel/CaldavLibrary/Operation/Sync/MRVSyncEventsOperation.h"
#include "Tessel/Platform/Foundation/Web/HTTPURLResponse.h"
#include "tests/support/ClientSession.h"
#include "tests/support/LogRecorder.h"

#include <gtest/gtest.h>

using namespace Tessel;
using namespace Tessel::Test;

namespace {

std::string entry(int number, const std::string& eTag)
{
    return "<response><href>/cal/" + std::to_string(number) + ".ics</href><propstat><prop><getetag>"
        + eTag + "</getetag></prop><status>HTTP/1.1 200 OK</status></propstat></response>";
}

/// Answers the listing with a body and keeps the bodies of all other requests.
struct LargeServer final : MNetworkManager {
    std::string listing;
    Callback<std::string> fetches;

    int send(MTask task) override
    {
        const std::string body(task.request.body.view());
        const bool isListing = body.find("calendar-query") != std::string::npos;
        if (!isListing) fetches(body);
        task.completionHandler(isListing ? Data(listing) : Data(),
            std::make_shared<HTTPURLResponse>(task.request.url(), 207, HTTPHeaders()), std::nullopt,
            std::nullopt, 0);
        return 1;
    }
};

} // namespace

TEST(SyncCalendars, ReportsWhatDiffers)
{
    ClientSession session(loadScript("sync-calendars.script"));
    session.host->heldCalendars = {calendarAt("/home/gone/", session.account),
        calendarAt("/home/same/", session.account, "1"),
        calendarAt("/home/changed/", session.account, "new"),
        calendarAt("/home/changed/", session.account, "old")};
    session.client->syncCalendars();
    ASSERT_TRUE(session.host->hears("calendarSyncFinished"));
    EXPECT_EQ(session.host->lines(),
        (std::vector<std::string> {"calendarsDeleted /home/gone/", "calendarsAdded /home/new/",
            "calendarsEdited /home/changed/", "calendarSyncFinished"}));
}

TEST(SyncCalendars, SaysNothingWithoutAList)
{
    ClientSession session("== lost\n> PROPFIND /home/\n@ error 4 lost\n");
    const LogRecorder log;
    session.client->syncCalendars();
    EXPECT_TRUE(waitFor([&] { return log.holds("No calendars obtained from server"); }));
    EXPECT_TRUE(session.host->lines().empty());
    EXPECT_TRUE(waitFor([&] { return session.client->syncQueue().operationCount() == 0; }));
}

TEST(SyncEvents, FetchesWhatIsNewAndWhatChanged)
{
    ClientSession session(loadScript("sync-events.script"));
    session.host->heldEvents = {eventAt("/cal/gone.ics", "1", session.calendar),
        eventAt("/cal/changed.ics", "1", session.calendar),
        eventAt("/cal/same.ics", "1", session.calendar)};
    session.client->syncEvents(session.calendar);
    ASSERT_TRUE(session.host->hears("eventsSyncFinished /cal/"));

    auto lines = session.host->lines();
    ASSERT_EQ(lines.size(), 4u);
    EXPECT_EQ(lines.front(),
        "eventsDeleted /cal/: uid of /cal/changed.ics, uid of /cal/same.ics"); // those still there
    EXPECT_EQ(lines.back(), "eventsSyncFinished /cal/");
    std::sort(lines.begin() + 1, lines.begin() + 3); // the two fetches run side by side
    EXPECT_EQ(lines[1], "eventsAdded /cal/: a, new");
    EXPECT_EQ(lines[2], "eventsEdited /cal/: changed");
}

TEST(SyncEvents, WithoutChangesOnlyNamesWhatIsStillThere)
{
    const auto server = std::make_shared<LargeServer>();
    server->listing
        = "<multistatus xmlns=\"DAV:\">" + entry(1, "a") + entry(2, "b") + "</multistatus>";
    HostSession session(server);
    session.host->heldEvents = {
        eventAt("/cal/1.ics", "a", session.calendar), eventAt("/cal/2.ics", "b", session.calendar)};
    session.client->syncEvents(session.calendar);
    ASSERT_TRUE(session.host->hears("eventsSyncFinished /cal/"));
    EXPECT_EQ(session.host->lines(),
        (std::vector<std::string> {"eventsDeleted /cal/: uid of /cal/1.ics, uid of /cal/2.ics",
            "eventsSyncFinished /cal/"}));
    EXPECT_EQ(server->fetches.count(), 0u);
}

TEST(SyncEvents, SaysNothingOfAnEmptiedOrUnreadableCalendar)
{
    for (const auto answer : {"< HTTP/1.1 207 Multi-Status\n<\n< <multistatus xmlns=\"DAV:\"/>\n",
             "< HTTP/1.1 500 Oops\n<\n< oops\n", "@ error 4 lost\n"}) {
        ClientSession session(std::string("== l\n> REPORT /cal/\n") + answer);
        session.host->heldEvents = {eventAt("/cal/1.ics", "a", session.calendar)};
        const auto operation = std::make_shared<MRVSyncEventsOperation>();
        operation->client = session.client;
        operation->calendar = session.calendar;
        OperationQueue().addOperation(operation);
        operation->waitUntilFinished();
        EXPECT_TRUE(session.host->lines().empty());
    }
}

TEST(SyncEvents, ComparesAHundredThousandEventsByHash)
{
    constexpr int count = 100'000;
    const auto server = std::make_shared<LargeServer>();
    HostSession session(server);
    server->listing = "<multistatus xmlns=\"DAV:\">";
    for (int i = 0; i < count; ++i) {
        // Held are the even numbers; every tenth of them has another tag on the server.
        server->listing += entry(i, i % 20 == 0 ? "new" : "old");
        session.host->heldEvents.push_back(
            eventAt("/cal/" + std::to_string(2 * i) + ".ics", "old", session.calendar));
    }
    server->listing += "</multistatus>";
    session.client->syncEvents(session.calendar);
    ASSERT_TRUE(session.host->hears("eventsSyncFinished /cal/"));
    EXPECT_EQ(session.host->lastEvents().size(), std::size_t(count / 2));

    ASSERT_EQ(server->fetches.count(), 2u);
    std::size_t hrefs = 0;
    for (std::size_t fetch = 0; fetch < 2; ++fetch) {
        const auto [body] = server->fetches.arguments(fetch);
        for (auto at = body.find("<d:href>"); at != std::string::npos;
             at = body.find("<d:href>", at + 1)) {
            ++hrefs;
        }
    }
    EXPECT_EQ(hrefs, std::size_t(count / 2 + count / 20));
    EXPECT_TRUE(session.ends());
}

TEST(FullSync, SyncsEachCalendarAndRunsAgainAfterwards)
{
    for (int round = 0; round < 2; ++round) {
        ClientSession session(loadScript("full-sync.script"));
        session.client->sync();
        ASSERT_TRUE(session.transport->waitUntilPlayed());
        ASSERT_TRUE(session.host->hears("eventsSyncFinished /cal/"));
        ASSERT_TRUE(waitFor([&] { return session.client->syncQueue().operationCount() == 0; }));
        EXPECT_EQ(session.host->lines(),
            (std::vector<std::string> {"calendarsAdded /cal/, /empty/", "calendarSyncFinished",
                "eventsAdded /cal/: one", "eventsSyncFinished /cal/"}));

        // The same client syncs again; nothing has changed now.
        session.host->heldCalendars = {
            calendarAt("/cal/", session.account, "1"), calendarAt("/empty/", session.account, "1")};
        auto script = loadScript("full-sync.script");
        script.exchanges.resize(1);
        MNetworkManager::setSharedInstance(std::make_shared<ScriptedTransport>(std::move(script)));
        session.client->sync();
        ASSERT_TRUE(waitFor([&] { return session.host->lines().size() == 5; }));
        EXPECT_EQ(session.host->lines().back(), "calendarSyncFinished");
        ASSERT_TRUE(waitFor([&] { return session.client->syncQueue().operationCount() == 0; }));
    }
}

TEST(FullSync, StaysOnTheQueueAfterAFailedListing)
{
    ClientSession session("== l\n> PROPFIND /home/\n@ error 4 lost\n");
    session.client->sync();
    ASSERT_TRUE(session.transport->waitUntilPlayed());
    EXPECT_TRUE(session.host->lines().empty());
    EXPECT_GE(session.client->syncQueue().operationCount(), 1u);
}
