#include "Tessel/CaldavLibrary/MRVAccountInfoProvider.h"
#include "Tessel/CaldavLibrary/Operation/AccountInfo/MRVGetPrincipalOperation.h"
#include "Tessel/CaldavLibrary/Operation/AccountInfo/MRVGetScheduleDefaultOperation.h"
#include "Tessel/CaldavLibrary/Operation/AccountInfo/MRVSupportedMethodOperation.h"
#include "tests/support/ClientSession.h"

#include <gtest/gtest.h>

using namespace Tessel;
using namespace Tessel::Test;

namespace {

std::shared_ptr<MRVAccount> accountOf(std::string serverURL)
{
    return std::make_shared<MRVAccount>(MRVAccount {
        .identifier = "account", .email = "alice@example.com", .serverURL = std::move(serverURL)});
}

/// Discovery for an account against a script.
struct Discovery {
    explicit Discovery(Script script, std::shared_ptr<MRVAccount> given)
        : transport(std::make_shared<ScriptedTransport>(std::move(script)))
        , account(std::move(given))
    {
        std::make_shared<MRVAccountInfoProvider>(account, host)->getAccountInfo(found);
    }

    std::shared_ptr<ScriptedTransport> transport;
    std::shared_ptr<MRVAccount> account;
    Callback<std::shared_ptr<MRVAccount>> found;
    std::shared_ptr<TestHost> host = std::make_shared<TestHost>();
    UseTransport use {transport};
};

/// What the account's methods are after an OPTIONS answer.
int methodsAfter(const std::string& answer)
{
    auto account = knownAccount();
    account->principalURL.reset();
    account->calendarHomeURL.reset();
    account->supportedMethod = MRVSupportedMethod::none;
    auto script = loadScript("methods.script");
    const auto options = "== options\n> OPTIONS /h/\n> !User-Agent\n> Authorization: Basic dTpw\n";
    script.exchanges.push_back(Script::parse(options + answer).exchanges.front());
    const Discovery discovery(std::move(script), account);
    EXPECT_TRUE(discovery.found.wait());
    EXPECT_EQ(std::get<0>(discovery.found.arguments()), account);
    return account->supportedMethod.rawValue();
}

} // namespace

TEST(Discovery, FindsTheAccountThroughTheWellKnownAddress)
{
    const auto account = accountOf("server.example:8443");
    const Discovery discovery(loadScript("discovery.script"), account);
    ASSERT_TRUE(discovery.found.wait());
    EXPECT_EQ(std::get<0>(discovery.found.arguments()), account);
    EXPECT_EQ(account->serverURL, "https://cal.server.example:9443");
    EXPECT_EQ(account->principalURL, "/principals/alice/");
    EXPECT_EQ(account->calendarHomeURL, "/calendars/alice/");
    EXPECT_EQ(account->scheduleInboxURL, "/calendars/alice/inbox/");
    EXPECT_EQ(account->scheduleOutboxURL, "/calendars/alice/outbox/");
    EXPECT_EQ(account->notificationURL, "/calendars/alice/notifications/");
    EXPECT_EQ(account->scheduleDefaultURL, std::nullopt);
    EXPECT_EQ(account->calendarUserAddressSet,
        (std::vector<std::string> {"mailto:alice@example.com", "/principals/alice/"}));
    EXPECT_EQ(account->supportedMethod.rawValue(), 14);
}

TEST(Discovery, ReadsTheMethodsFromTheAllowHeader)
{
    EXPECT_EQ(methodsAfter("< HTTP/1.1 200 OK\n< Allow: OPTIONS, GET, PUT, DELETE, PROPFIND\n"
                           "< allow: PROPPATCH, MKCALENDAR\n"),
        14);
    EXPECT_EQ(methodsAfter("< HTTP/1.1 200 OK\n< allow: mkcalendar\n"), 0);
    EXPECT_EQ(methodsAfter("< HTTP/1.1 200 OK\n"), 1);
    EXPECT_EQ(methodsAfter("< HTTP/1.1 403 Forbidden\n< Allow: DELETE\n"), 1);
    EXPECT_EQ(methodsAfter("@ error 4 gone\n"), 1);
    EXPECT_EQ(methodsAfter("@ not-http\n"), 1);
}

TEST(Discovery, NeverAnswersWithoutAPrincipal)
{
    const Discovery discovery(
        Script::parse("== p\n> PROPFIND /.well-known/caldav\n< HTTP/1.1 404 Not Found\n"),
        accountOf("https://server.example/"));
    ASSERT_TRUE(discovery.transport->waitUntilPlayed());
    EXPECT_EQ(discovery.found.count(), 0u);
    EXPECT_FALSE(discovery.account->principalURL);
}

TEST(Discovery, NeverAnswersWhenThePrincipalAnswerCarriesTheHome)
{
    const Discovery discovery(
        loadScript("home-in-principal.script"), accountOf("https://server.example"));
    ASSERT_TRUE(discovery.transport->waitUntilPlayed());
    EXPECT_EQ(discovery.found.count(), 0u);
    EXPECT_EQ(discovery.account->calendarHomeURL, "/h/");
}

TEST(Discovery, SendsNothingForAnAccountThatHasAPrincipal)
{
    const Discovery discovery(Script::parse(""), knownAccount());
    EXPECT_TRUE(discovery.transport->requests().empty());
    EXPECT_EQ(discovery.found.count(), 0u);
}

TEST(Discovery, EndsWhenTheWellKnownAddressRedirectsToItself)
{
    struct Looping final : MNetworkManager {
        std::atomic<int> requests = 0;
        Callback<> refused;

        int send(MTask task) override
        {
            ++requests;
            const auto delegate
                = std::dynamic_pointer_cast<MTaskRedirectionDelegate>(task.delegate.lock());
            if (!delegate->didRequestHTTPRedirection(task.request, task.request)) refused();
            return requests;
        }
    };
    const auto transport = std::make_shared<Looping>();
    const UseTransport use(transport);
    Callback<std::shared_ptr<MRVAccount>> found;
    std::make_shared<MRVAccountInfoProvider>(
        accountOf("https://server.example"), std::make_shared<TestHost>())
        ->getAccountInfo(found);
    ASSERT_TRUE(transport->refused.wait());
    EXPECT_EQ(transport->requests, 11);
}

TEST(Discovery, BuildsTheServersAddresses)
{
    const auto wellKnown = [](std::string server) {
        return MRVGetPrincipalOperation(
            std::make_shared<MRVAccountInfoProvider>(accountOf(std::move(server)), nullptr))
            .wellKnownURL();
    };
    EXPECT_EQ(wellKnown("h"), "https://h/.well-known/caldav");
    EXPECT_EQ(wellKnown("h:80/"), "https://h:80/.well-known/caldav");
    EXPECT_EQ(wellKnown("http://h"), "http://h/.well-known/caldav");
    EXPECT_EQ(wellKnown("https://h/"), "https://h/.well-known/caldav");

    using Principal = MRVGetPrincipalOperation;
    EXPECT_EQ(Principal::getServerURL("http://h:5232/a/b"), "https://h:5232");
    EXPECT_EQ(Principal::getServerURL("https://h"), "https://h");
}

TEST(Discovery, ScheduleDefaultProbeOnlyAsks)
{
    const auto transport
        = std::make_shared<ScriptedTransport>(loadScript("schedule-default.script"));
    const UseTransport use(transport);
    const auto host = std::make_shared<TestHost>();
    const auto account = knownAccount();
    const auto run = [&] {
        const auto operation = std::make_shared<MRVGetScheduleDefaultOperation>();
        operation->client = std::make_shared<MRVClient>(account, host);
        OperationQueue().addOperation(operation);
        operation->waitUntilFinished();
    };
    run();
    EXPECT_TRUE(transport->requests().empty());
    account->scheduleInboxURL = "/inbox/";
    run();
    EXPECT_TRUE(transport->waitUntilPlayed());
    EXPECT_FALSE(account->scheduleDefaultURL);
}

TEST(DiscoveryDeathTest, StopsWithoutACalendarHomeOrAProvider)
{
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    const auto provider
        = std::make_shared<MRVAccountInfoProvider>(knownAccount(), std::make_shared<TestHost>());
    const auto operation = MRVSupportedMethodOperation::make(provider);
    provider->account()->calendarHomeURL.reset();
    EXPECT_DEATH(operation->main(), "calendar home is not known");
    EXPECT_DEATH(MRVGetPrincipalOperation(nullptr).main(), "without an account-info provider");
}
