#include "Tessel/CaldavLibrary/Operation/Event/MRVCreateEventOperation.h"
#include "Tessel/CaldavLibrary/Operation/Event/MRVMoveEventOperation.h"
#include "Tessel/CaldavLibrary/Operation/Event/MRVUpdateEventOperation.h"
#include "tests/support/ClientSession.h"
#include "tests/support/LogRecorder.h"
#include "tests/support/SameAnswer.h"

#include <gtest/gtest.h>

using namespace Tessel;
using namespace Tessel::Test;

namespace {

using Created = Callback<std::optional<std::string>, std::optional<Error>>;
using Done = Callback<std::optional<Error>>;

std::shared_ptr<MRVEvent> writable(const std::shared_ptr<MRVCalendar>& calendar,
    std::string href = "/cal/e1.ics", std::string summary = "Talk", bool hasZone = true)
{
    const auto zone = hasZone ? TimeZone::withIdentifier("Europe/Berlin") : std::nullopt;
    return std::make_shared<MRVEvent>(MRVEvent {
        .uid = "old",
        .href = std::move(href),
        .eTag = "\"42\"",
        .calendarData = "",
        .status = "CONFIRMED",
        .summary = std::move(summary),
        .startTimeZone = zone,
        .endTimeZone = zone,
        .calendar = calendar,
    });
}

/// The creation of an event, answered with a status.
struct Creation {
    explicit Creation(const char* status)
        : transport(std::make_shared<SameAnswer>(status))
    {
        const HostSession session(transport);
        event = writable(calendarAt("/cals/work/", session.account));
        const auto operation = std::make_shared<MRVCreateEventOperation>();
        operation->event = event;
        operation->completionHandler = created;
        session.finish(operation);
    }

    std::shared_ptr<SameAnswer> transport;
    std::shared_ptr<MRVEvent> event;
    Created created;
};

std::shared_ptr<MRVUpdateEventOperation> update(
    const ClientSession& session, const Done& done, std::shared_ptr<MRVEvent> event = nullptr)
{
    const auto operation = std::make_shared<MRVUpdateEventOperation>();
    operation->event = event ? event : writable(calendarAt("/cal/", session.account));
    operation->completionHandler = done;
    session.finish(operation);
    return operation;
}

std::string putAnswered(const std::string& answer)
{
    return "== update\n> PUT /cal/e1.ics\n" + answer + "\n";
}

/// Every upper-case hexadecimal digit as an X.
std::string shapeOf(std::string text)
{
    for (char& c : text) {
        if ((c >= '0' && c <= '9') || (c >= 'A' && c <= 'F')) c = 'X';
    }
    return text;
}

} // namespace

TEST(CreateEvent, PutsANewResourceUnderANewUID)
{
    const LogRecorder log;
    const Creation creation("201");
    ASSERT_EQ(creation.created.count(), 1u);
    const auto [uid, error] = creation.created.arguments();
    EXPECT_FALSE(error);
    EXPECT_EQ(shapeOf(uid.value()), "XXXXXXXX-XXXX-XXXX-XXXX-XXXXXXXXXXXXmcaldav");
    EXPECT_EQ(creation.event->uid, uid);

    const auto& request = creation.transport->request.value();
    const auto url = "https://server.example/cals/work/" + *uid + ".ics";
    EXPECT_EQ(request.url(), url);
    EXPECT_EQ(request.method, "PUT");
    EXPECT_EQ(request.headers.value("If-None-Match"), "*");
    EXPECT_EQ(request.headers.value("Content-Type"), "text/calendar");
    EXPECT_FALSE(request.headers.value("User-Agent"));
    EXPECT_EQ(request.body.view(), creation.event->iCalendarString());
    EXPECT_TRUE(log.holds("create event URL: " + url));
}

TEST(WriteEvent, LogsAStatusThatIsNoSuccess)
{
    const LogRecorder log;
    const Creation creation("403");
    EXPECT_TRUE(log.holds("status code: 403"));
    update(ClientSession(putAnswered("< HTTP/1.1 404 Gone")), Done());
    EXPECT_TRUE(log.holds("edit failed status code: 404"));
}

TEST(CreateEvent, EndsWithoutARequestWhenThereIsNoText)
{
    const LogRecorder log;
    const ClientSession session("");
    const auto operation = std::make_shared<MRVCreateEventOperation>();
    operation->event = writable(calendarAt("/cal/", session.account), "", "", false);
    const Created created;
    operation->completionHandler = created;
    session.finish(operation);
    EXPECT_EQ(created.count(), 0u);
    EXPECT_TRUE(operation->event->uid.ends_with("mcaldav"));
    EXPECT_TRUE(log.holds("can't get iCalString"));
}

TEST(UpdateEvent, GuardsThePutByTheTagAsHeld)
{
    const LogRecorder log;
    const ClientSession session(loadScript("update-event.script"));
    const Done done;
    const auto operation = update(session, done);
    ASSERT_EQ(done.count(), 1u);
    EXPECT_FALSE(std::get<0>(done.arguments()));
    EXPECT_EQ(session.transport->requests()[0].body.view(), operation->event->iCalendarString());
    EXPECT_EQ(log.lines(),
        (std::vector<std::string> {"event update operation", "eTag: \"42\"", "edit successful"}));
    EXPECT_EQ(log.functions(), std::set<std::string> {"main"});
}

TEST(UpdateEvent, EndsWithoutARequestWhenThereIsNoTextOrNoAuthDelegate)
{
    const LogRecorder log;
    ClientSession session("");
    const Done done;
    const auto calendar = calendarAt("/cal/", session.account);
    update(session, done, writable(calendar, "/cal/e1.ics", "", false));
    EXPECT_TRUE(log.holds("icalstring can't be parsed"));

    session.client = std::make_shared<MRVClient>(session.account, nullptr);
    update(session, done);
    EXPECT_EQ(done.count(), 0u);
}

TEST(MoveEvent, NamesTheResourceByItsWholePath)
{
    const LogRecorder log;
    ClientSession session(loadScript("move-events.script"));
    const Done done;
    const auto from = calendarAt("/cals/home/", session.account);
    const auto to = [&](const char* href) { return calendarAt(href, session.account); };
    session.client->move(writable(from, "/cals/home/e1.ics"), to("/cals/work/"), done);
    ASSERT_TRUE(done.wait(1));
    session.client->move(writable(from, "/cals/home/a b%20c%25.ics"), to("/cals/work"), done);
    ASSERT_TRUE(done.wait(2));
    EXPECT_EQ(log.lines(), std::vector<std::string> {"status code: 204"});
    session.client->move(writable(from, "/cals/home/e1.ics"), to("/cals/work/"), done);
    ASSERT_TRUE(done.wait(3));
    for (int i = 0; i < 3; ++i)
        EXPECT_FALSE(std::get<0>(done.arguments(i)));
    EXPECT_TRUE(log.holds("status code: 403"));
}
