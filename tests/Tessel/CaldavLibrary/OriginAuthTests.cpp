#include "Tessel/CaldavLibrary/BearerAuth.h"
#include "Tessel/CaldavLibrary/MRVAccountInfoProvider.h"
#include "Tessel/CaldavLibrary/Operation/Notification/MRVGetNotificationsOperation.h"
#include "Tessel/CaldavLibrary/PasswordAuth.h"
#include "tests/support/ClientSession.h"
#include "tests/support/ScriptedServer.h"

#include <gtest/gtest.h>

using namespace Tessel;
using namespace Tessel::Test;

namespace {

const auto server = *Origin::ofServer("server.example");

std::string credentialFor(MRVAuthDelegate& auth, const std::string& url)
{
    URLRequest request(url);
    request.headers.set("Authorization", "one that was there");
    std::string credential;
    auth.authorize(request, false, nullptr, [&](const URLRequest& authorized) {
        credential = authorized.headers.value("Authorization").value_or("none");
    });
    return credential;
}

/// The exchanges of one trial on the way of an account from discovery to its notifications.
struct Trial {
    explicit Trial(const std::string& name)
        : transport(std::make_shared<ScriptedTransport>(part(name)))
    {
    }

    static Script part(const std::string& name)
    {
        auto script = loadScript("elsewhere.script");
        std::erase_if(script.exchanges,
            [&](const auto& exchange) { return !exchange.title.starts_with(name + ":"); });
        return script;
    }

    void discover()
    {
        account->principalURL.reset();
        account->calendarHomeURL.reset();
        const Callback<std::shared_ptr<MRVAccount>> found;
        std::make_shared<MRVAccountInfoProvider>(account, auth)->getAccountInfo(found);
        EXPECT_TRUE(transport->waitUntilPlayed());
    }

    std::shared_ptr<ScriptedTransport> transport;
    UseTransport use {transport};
    std::shared_ptr<PasswordAuth> auth = std::make_shared<PasswordAuth>(server, "alice", "secret");
    std::shared_ptr<MRVAccount> account = knownAccount();
    std::shared_ptr<MRVClient> client = std::make_shared<MRVClient>(account, auth);
};

} // namespace

TEST(OriginAuth, FollowsNoAnswerOfTheServerElsewhere)
{
    for (const auto* name : {"redirect-to-host", "redirect-to-port", "redirect-to-http",
             "redirect-within", "principal-absolute", "principal-at-sign"}) {
        SCOPED_TRACE(name);
        Trial(name).discover();
    }
    for (const auto* href : {"https://evil.example/cal/", "@evil.example/cal/",
             ":secret@evil.example/cal/", "http://server.example/cal/", ".evil.example/cal/",
             "https://server.example@evil.example/cal/", ":8443/cal/"}) {
        SCOPED_TRACE(href);
        Trial trial("calendar-absolute");
        trial.client->syncEvents(calendarAt(href, trial.account));
        EXPECT_TRUE(trial.transport->waitUntilPlayed());
        trial.client->syncQueue().waitUntilAllOperationsAreFinished();
    }
    Trial trial("notification-absolute");
    trial.account->notificationURL = "/notes/";
    trial.client->getNotifications([](auto...) {});
    EXPECT_TRUE(trial.transport->waitUntilPlayed());
}

/// The same over a wire, where libcurl might make a credential of what stands before an at-sign.
TEST(OriginAuth, SendsNothingOfAnAccountToAnotherHost)
{
    ScriptedServer other(Script::parse(
        "== elsewhere\n> DELETE /cal/\n> !Authorization\n@ repeat\n< HTTP/1.1 204 Gone\n"));
    ScriptedServer own(Script::parse(
        "== own\n> DELETE /cal/\n> Authorization: Basic YWxpY2U6c2VjcmV0\n< HTTP/1.1 204 Gone\n"));
    const auto auth
        = std::make_shared<PasswordAuth>(*Origin::ofServer(own.url("")), "alice", "secret");
    const auto account = knownAccount();
    const auto client = std::make_shared<MRVClient>(account, auth);
    const auto place = other.url("/cal/", "localhost").substr(std::string("http://").size());
    const auto deletes = [&](const std::string& href) {
        const Callback<std::optional<Error>> done;
        client->deleteCalendar(calendarAt(href, account), done);
        return done.wait();
    };
    account->serverURL = own.url("");
    EXPECT_TRUE(deletes("http://" + place));
    EXPECT_TRUE(deletes("/cal/"));
    // A port ends where user information might begin.
    account->serverURL = "http://127.0.0.1";
    EXPECT_TRUE(deletes("@" + place));
    EXPECT_TRUE(deletes(":secret@" + place));
    EXPECT_EQ(other.rawRequests().size(), 3u);
}

TEST(OriginAuth, SignsForTheOriginsItWasGiven)
{
    PasswordAuth password(server, "alice", "secret", {*Origin::ofServer("http://cal.example:81")});
    EXPECT_EQ(credentialFor(password, "https://server.example:443/x"), "Basic YWxpY2U6c2VjcmV0");
    EXPECT_EQ(credentialFor(password, "http://cal.example:81/"), "Basic YWxpY2U6c2VjcmV0");
    for (const auto* url : {"https://cal.example:81/", "http://cal.example/",
             "http://server.example/", "https://server.example:444/", "/path", "ftp://x/"})
        EXPECT_EQ(credentialFor(password, url), "none") << url;

    BearerAuth bearer(server, "t1");
    EXPECT_EQ(credentialFor(bearer, "https://server.example/"), "Bearer t1");
    bearer.setToken("t2");
    EXPECT_EQ(credentialFor(bearer, "https://server.example/"), "Bearer t2");
    EXPECT_EQ(credentialFor(bearer, "https://evil.example/"), "none");
}
