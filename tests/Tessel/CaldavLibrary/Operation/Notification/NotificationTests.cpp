#include "Tessel/CaldavLibrary/Operation/Notification/MRVGetNotificationsInfoOperation.h"
#include "Tessel/CaldavLibrary/Operation/Notification/MRVGetNotificationsOperation.h"
#include "tests/support/ClientSession.h"
#include "tests/support/LogRecorder.h"

#include <gtest/gtest.h>

using namespace Tessel;
using namespace Tessel::Test;

namespace {

using Notifications = std::vector<std::shared_ptr<MRVNotification>>;
using Fetched = Callback<std::optional<Notifications>, std::optional<Error>>;

std::shared_ptr<MRVNotification> held(std::string href)
{
    return std::make_shared<MRVNotification>(
        MRVNotification {.account = knownAccount(), .href = std::move(href)});
}

/// A listing of these resources, and the answers for some of them.
std::string script(const std::vector<std::string>& hrefs, const std::string& answers = "")
{
    std::string text = "@ unordered\n== listing\n> PROPFIND /notes/\n< HTTP/1.1 207 Multi-Status\n"
                       "<\n< <multistatus xmlns=\"DAV:\">\n";
    for (const auto& href : hrefs) {
        text += "< <response><href>" + href + "</href><propstat><prop><resourcetype/>"
            + "<n:notificationtype xmlns:n=\"http://calendarserver.org/ns/\"><n:invite-reply/>"
              "</n:notificationtype></prop><status>HTTP/1.1 200 "
              "OK</status></propstat></response>\n";
    }
    return text + "< </multistatus>\n" + answers;
}

struct Fetch : ClientSession {
    explicit Fetch(Script script)
        : ClientSession(std::move(script))
    {
        account->notificationURL = "/notes/";
    }
    explicit Fetch(const std::string& script)
        : Fetch(Script::parse(script))
    {
    }

    /// Fetches until the operation has finished.
    void run() { finish(MRVGetNotificationsOperation::make(client, nullptr, fetched)); }

    Fetched fetched;
};

} // namespace

TEST(GetNotifications, ReportsTheGoneAndFetchesTheNew)
{
    const LogRecorder log;
    Fetch session(loadScript("notifications.script"));
    session.host->heldNotifications = {held("/notes/gone.xml"), held("/notes/held.xml")};
    const Fetched fetched;
    session.client->getNotifications(fetched);
    ASSERT_TRUE(fetched.wait());

    const auto [notifications, error] = fetched.arguments();
    EXPECT_FALSE(error);
    ASSERT_EQ(notifications->size(), 2u);
    EXPECT_EQ(notifications->at(0)->identifier, "/notes/n%201.xml");
    EXPECT_EQ(notifications->at(0)->summary, "Bob's work");
    EXPECT_EQ(notifications->at(0)->account, session.account);
    EXPECT_EQ(notifications->at(1)->identifier, "https://other.example/reply.xml");
    EXPECT_TRUE(notifications->at(1)->isReply);
    EXPECT_EQ(
        session.host->lines(), std::vector<std::string> {"notificationsRemoved /notes/gone.xml"});
    EXPECT_TRUE(log.holds("notification fetch, status code: 500"));
    EXPECT_FALSE(log.holds("notification fetch, status code: 404"));
    EXPECT_EQ(fetched.count(), 1u);
}

TEST(GetNotifications, EndsWithAnEmptyListWhenNothingIsNew)
{
    Fetch fetch(script({"/n1", "/n2"}));
    fetch.host->heldNotifications = {held("/n1"), held("/n2"), held("/n3")};
    fetch.run();
    ASSERT_EQ(fetch.fetched.count(), 1u);
    EXPECT_EQ(std::get<0>(fetch.fetched.arguments()), Notifications {});
    EXPECT_FALSE(std::get<1>(fetch.fetched.arguments()));
    EXPECT_EQ(fetch.host->lines(), std::vector<std::string> {"notificationsRemoved /n3"});
}

TEST(GetNotifications, ReportsTheFirstErrorOnceAfterTheLastAnswer)
{
    const LogRecorder log;
    Fetch fetch(script({"/n1", "/n2", "/n3", "/n4"}, R"(
== 1
> GET /n1
@ error 4 first
== 2
> GET /n2
@ not-http
== 3
> GET /n3
@ error 4 second
== 4
> GET /n4
< HTTP/1.1 200 OK
<
< <n xmlns="http://calendarserver.org/ns/" xmlns:d="DAV:"><dtstamp>20240102T090000Z</dtstamp>
< <invite-reply><d:href>h</d:href><hosturl><d:href>/</d:href></hosturl></invite-reply></n>
)"));
    fetch.run();
    ASSERT_EQ(fetch.fetched.count(), 1u);
    EXPECT_EQ(std::get<0>(fetch.fetched.arguments())->size(), 1u);
    EXPECT_EQ(std::get<1>(fetch.fetched.arguments())->localizedDescription, "first");
    EXPECT_TRUE(log.holds("Error in getting notification data, second"));
    EXPECT_TRUE(log.holds("Different response format for notification data"));
}

TEST(GetNotifications, EndsInSilenceWithoutAListing)
{
    const LogRecorder log;
    for (const auto& answer :
        {script({}), std::string("== listing\n> PROPFIND /notes/\n@ error 4 no route\n"),
            std::string("== listing\n> PROPFIND /notes/\n< HTTP/1.1 404 Not Found\n<\n< <x/>\n")}) {
        Fetch fetch(answer);
        fetch.host->heldNotifications = {held("/n1")};
        fetch.run();
        EXPECT_EQ(fetch.fetched.count(), 0u) << answer;
        EXPECT_EQ(fetch.host->lines(), std::vector<std::string> {});
    }
}

TEST(GetNotifications, TellsOfAnAuthDelegateThatIsGone)
{
    Fetch fetch("");
    fetch.client = std::make_shared<MRVClient>(fetch.account, nullptr);
    const auto operation = std::make_shared<MRVGetNotificationsOperation>();
    operation->completionHandler = fetch.fetched;
    operation->notificationInfo
        = {std::make_shared<MRVNotificationInfo>(MRVNotificationInfo {.href = "/n1"})};
    fetch.finish(operation);
    ASSERT_EQ(fetch.fetched.count(), 1u);
    EXPECT_TRUE(std::get<1>(fetch.fetched.arguments()));
}

TEST(GetNotifications, NeverEndsWithoutANotificationURL)
{
    const ClientSession session("");
    const auto listing = std::make_shared<MRVGetNotificationsInfoOperation>();
    listing->client = session.client;
    listing->start();
    EXPECT_FALSE(listing->isFinished());
}

TEST(GetNotifications, GetsItsListingBeforeItStarts)
{
    for (int i = 0; i < 200; ++i) {
        Fetch fetch(script({"/n1"}));
        fetch.host->heldNotifications = {held("/n1")};
        fetch.run();
        ASSERT_EQ(fetch.fetched.count(), 1u);
    }
}
