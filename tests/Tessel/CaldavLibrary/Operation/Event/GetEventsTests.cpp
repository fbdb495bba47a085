#include "Tessel/CaldavLibrary/Operation/Event/MRVGetEventsByRange.h"
#include "Tessel/CaldavLibrary/Operation/Event/MRVGetEventsOperation.h"
#include "tests/support/ClientSession.h"
#include "tests/support/LogRecorder.h"

#include <gtest/gtest.h>

using namespace Tessel;
using namespace Tessel::Test;

namespace {

using Fetched
    = Callback<std::optional<std::vector<std::shared_ptr<MRVEvent>>>, std::optional<Error>>;

} // namespace

TEST(GetEvent, AnswersTheCallerOrTheDelegate)
{
    {
        const LogRecorder log;
        ClientSession session(loadScript("one-event.script"));
        Fetched fetched;
        session.client->getEvent("/cal/1.ics", session.calendar, true, fetched);
        ASSERT_TRUE(fetched.wait());
        EXPECT_EQ(log.functions(), (std::set<std::string> {"main", "process"}));
        EXPECT_EQ(std::get<0>(fetched.arguments())->front()->uid, "one");
        EXPECT_TRUE(session.host->lines().empty());
    }
    for (const bool isNew : {true, false}) {
        ClientSession session(loadScript("one-event.script"));
        session.client->getEvent(eventAt("/cal/1.ics", "0", session.calendar), isNew, nullptr);
        EXPECT_TRUE(
            session.host->hears(isNew ? "eventsAdded /cal/: one" : "eventsEdited /cal/: one"));
    }
}

TEST(GetEvent, NeverAnswersWithEventsWithoutASyncDelegate)
{
    ClientSession session(loadScript("one-event.script"));
    session.client->setSyncDelegate(nullptr);
    Fetched fetched;
    session.client->getEvent("/cal/1.ics", session.calendar, true, fetched);
    ASSERT_TRUE(session.transport->waitUntilPlayed());
    EXPECT_EQ(fetched.count(), 0u);
}

TEST(GetEvents, WithoutAListDoesNothingForEver)
{
    ClientSession session("");
    const auto run = [&](bool withEmptyList) {
        const auto operation = std::make_shared<MRVGetEventsOperation>();
        operation->client = session.client;
        operation->calendar = session.calendar;
        if (withEmptyList) operation->events.emplace();
        operation->start();
        return operation->isFinished();
    };
    EXPECT_FALSE(run(false));
    EXPECT_TRUE(run(true));
}

TEST(GetEventsByRange, SendsItsFixedBodyToTheServerItself)
{
    ClientSession session(loadScript("events-by-range.script"));
    session.account->serverURL = "https://server.example/";
    const auto operation = std::make_shared<MRVGetEventsByRange>();
    operation->client = session.client;
    OperationQueue().addOperation(operation);
    operation->waitUntilFinished();
    EXPECT_TRUE(session.transport->waitUntilPlayed());
    EXPECT_TRUE(session.host->lines().empty());
}
