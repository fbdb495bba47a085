#include "SyncRun.h"

#include "support/ScriptedTransport.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <iostream>

namespace Tessel::App {
namespace {

std::string exchange(const std::string& request, const std::string& contained,
    const std::string& status, const std::string& body)
{
    return "== " + request + "\n> " + request + "\n@ contains " + contained + "\n< HTTP/1.1 "
        + status + "\n<\n< " + body + "\n";
}

std::string multistatus(const std::string& responses)
{
    return R"(<multistatus xmlns="DAV:" xmlns:c="urn:ietf:params:xml:ns:caldav")"
           R"( xmlns:cs="http://calendarserver.org/ns/">)"
        + responses + "</multistatus>";
}

std::string response(const std::string& href, const std::string& properties)
{
    return "<response><href>" + href + "</href><propstat><prop>" + properties
        + "</prop><status>HTTP/1.1 200 OK</status></propstat></response>";
}

std::string listedCalendar(const std::string& cTag)
{
    return multistatus(response("/home/c/",
        "<resourcetype><collection/><c:calendar/></resourcetype><displayname>Work</displayname>"
        "<cs:getctag>"
            + cTag
            + "</cs:getctag><sync-token>s</sync-token><owner><href>/p/</href></owner>"
              "<c:supported-calendar-component-set><c:comp name=\"VEVENT\"/>"
              "</c:supported-calendar-component-set><current-user-privilege-set/>"
              "<c:calendar-timezone>BEGIN:VCALENDAR&#10;BEGIN:VTIMEZONE&#10;TZID:Europe/Berlin&#10;"
              "END:VTIMEZONE&#10;END:VCALENDAR</c:calendar-timezone>"));
}

std::string listing(const std::string& body, const std::string& status = "207 Multi-Status")
{
    return exchange("PROPFIND /home/", "displayname", status, body);
}

std::string tags(const std::string& body, const std::string& status = "207 Multi-Status")
{
    return exchange("REPORT /home/c/", "calendar-query", status, body);
}

std::string fetched(const std::string& body, const std::string& contained = "calendar-multiget",
    const std::string& status = "207 Multi-Status")
{
    return exchange("REPORT /home/c/", contained, status, body);
}

std::string tag(const std::string& name, const std::string& eTag)
{
    return response("/home/c/" + name, "<getetag>" + eTag + "</getetag>");
}

std::string event(const std::string& name, const std::string& eTag)
{
    return response("/home/c/" + name,
        "<getetag>" + eTag
            + "</getetag><c:calendar-data>BEGIN:VCALENDAR&#10;BEGIN:VEVENT&#10;UID:" + name
            + "&#10;SUMMARY:" + name + "&#10;END:VEVENT&#10;END:VCALENDAR</c:calendar-data>");
}

/// A host whose account is known, on a server that plays a script at each sync.
class SyncRunTest : public testing::Test {
protected:
    SyncRunTest()
    {
        auto pattern = (std::filesystem::temp_directory_path() / "tessel-sync-XXXXXX").string();
        directory_ = mkdtemp(pattern.data());
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
        std::filesystem::remove_all(directory_);
    }

    SyncRun::Totals sync(const std::string& script)
    {
        const auto network = std::make_shared<Tessel::Test::ScriptedTransport>(
            Tessel::Test::Script::parse(script));
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

    void syncTwoEvents()
    {
        sync(listing(listedCalendar("1")) + tags(multistatus(tag("a", "1") + tag("b", "1")))
            + fetched(multistatus(event("a", "1") + event("b", "1"))));
    }

    using Names = std::vector<std::string>;

private:
    Options options() const
    {
        return {.server = "server.example",
            .user = "alice",
            .storeFile = (directory_ / "store.sqlite").string()};
    }

    std::filesystem::path directory_;
};

TEST_F(SyncRunTest, FollowsWhatChanged)
{
    syncTwoEvents();
    EXPECT_EQ(held(), (Names {"a 1", "b 1"}));
    auto totals = sync(listing(listedCalendar("2")) + tags(multistatus(tag("a", "2")))
        + fetched(multistatus(event("a", "2")), "<d:href>/home/c/a</d:href>"));
    EXPECT_EQ(totals.eventsEdited, 1U);
    EXPECT_EQ(totals.eventsRemoved, 1U);
    EXPECT_EQ(held(), Names {"a 2"});
    totals = sync(listing(listedCalendar("3")) + tags(multistatus(tag("a", "2") + tag("c", "1")))
        + fetched(multistatus(event("c", "1")), "<d:href>/home/c/c</d:href>"));
    EXPECT_EQ(totals.eventsAdded, 1U);
    EXPECT_EQ(held(), (Names {"a 2", "c 1"}));
}

TEST_F(SyncRunTest, AnUnchangedCalendarAsksNothing)
{
    syncTwoEvents();
    const auto totals = sync(listing(listedCalendar("1")));
    EXPECT_EQ(totals.calendarsEdited, 0U);
    EXPECT_EQ(held(), (Names {"a 1", "b 1"}));
}

TEST_F(SyncRunTest, AnEmptiedCalendarIsEmptyHere)
{
    syncTwoEvents();
    const auto totals = sync(listing(listedCalendar("2")) + tags(multistatus("")));
    EXPECT_EQ(totals.eventsRemoved, 2U);
    EXPECT_TRUE(totals.failed.empty());
    EXPECT_EQ(held(), Names {});
    EXPECT_EQ(sync(listing(listedCalendar("2"))).calendarsEdited, 0U) << "its tag is kept";
}

TEST_F(SyncRunTest, AFailedReplyIsNoDeletionAndIsTriedAgain)
{
    syncTwoEvents();
    const std::pair<std::string, std::string> failures[]
        = {{"", "500 Oh"}, {"<html/>", "207 Multi-Status"}, {multistatus(""), "503 Busy"}};
    for (const auto& [body, status] : failures) {
        const auto totals = sync(listing(listedCalendar("2")) + tags(body, status));
        EXPECT_EQ(totals.failed, Names {"Work"}) << body << status;
        EXPECT_EQ(totals.calendarsEdited, 1U) << "each time anew";
        EXPECT_EQ(held(), (Names {"a 1", "b 1"}));
    }
    const auto totals = sync(listing(listedCalendar("2")) + tags(multistatus(tag("a", "2")))
        + fetched("", "calendar-multiget", "500 Oh"));
    EXPECT_EQ(totals.failed, Names {"Work"}) << "the fetch failed";
    EXPECT_EQ(held(), (Names {"a 1", "b 1"}));

    const auto again = sync(listing(listedCalendar("2")) + tags(multistatus(tag("a", "2")))
        + fetched(multistatus(event("a", "2"))));
    EXPECT_TRUE(again.failed.empty());
    EXPECT_EQ(held(), Names {"a 2"});
}

TEST_F(SyncRunTest, AFailedListingEndsTheSyncWithTheServersLastWord)
{
    syncTwoEvents();
    try {
        sync(listing("", "401 Unauthorized"));
        FAIL() << "a sync without a listing came to an end";
    } catch (const StepFailed& failed) {
        EXPECT_EQ(failed.step, "sync");
        EXPECT_EQ(failed.lastWord, "PROPFIND https://server.example/home/: 401");
    }
    EXPECT_EQ(held(), (Names {"a 1", "b 1"}));
}

} // namespace
} // namespace Tessel::App
