#include "Tessel/CaldavLibrary/Operation/MRVOperation.h"
#include "tests/support/LogRecorder.h"
#include "tests/support/ScriptedTransport.h"
#include "tests/support/TestHost.h"

#include <gtest/gtest.h>

using namespace Tessel;
using namespace Tessel::Test;

namespace {

using Outcome = Callback<Data, std::optional<Error>, std::optional<MRVStatusCode>>;

/// Sends one GET through `process`.
struct Probe final : MRVOperation {
    void main() override { process(request, "Probe", nullptr, outcome); }

    URLRequest request {"https://server.example/x"};
    Outcome outcome;
};

/// Starts a probe on this thread, so that what it does to its request is done here as well, and
/// waits until it has finished.
std::shared_ptr<Probe> run(const std::string& script,
    const std::shared_ptr<TestHost>& host = std::make_shared<TestHost>(),
    const std::shared_ptr<MRVAccount>& account = knownAccount())
{
    const UseTransport use(std::make_shared<ScriptedTransport>(Script::parse(script)));
    const auto probe = std::make_shared<Probe>();
    probe->accountInfoProvider = std::make_shared<MRVAccountInfoProvider>(account, host);
    probe->start();
    probe->waitUntilFinished();
    EXPECT_EQ(probe->outcome.count(), 1u);
    return probe;
}

std::optional<MRVStatusCode> statusOf(int code)
{
    const auto probe = run("== probe\n> GET /x\n< HTTP/1.1 " + std::to_string(code) + " Text\n");
    EXPECT_FALSE(std::get<1>(probe->outcome.arguments()));
    return std::get<2>(probe->outcome.arguments());
}

} // namespace

TEST(MRVOperationProcess, SendsAnAuthorisedRequestAndLogsTheExchange)
{
    const LogRecorder log;
    const auto probe = run(R"(
== probe
> GET /x
> User-Agent: CalDavTest-iOS-Client
> Authorization: Basic dTpw
< HTTP/1.1 201 Created
<
< made
)");
    EXPECT_EQ(probe->request.headers.value("User-Agent"), "CalDavTest-iOS-Client");
    EXPECT_EQ(std::get<0>(probe->outcome.arguments()).view(), "made");
    EXPECT_EQ(log.lines(),
        (std::vector<std::string> {"response: 4 bytes", "made", "data: 4 bytes, resposeStatus: 201",
            "status: default error : 201"}))
        << "and never a credential";
}

TEST(MRVOperationProcess, AsksForTheTokenOfAGoogleAccount)
{
    const auto account = knownAccount();
    account->accountType = MRVAccountType::google;
    run("== p\n> GET /x\n> Authorization: Bearer token\n< HTTP/1.1 200 OK\n",
        std::make_shared<TestHost>(), account);
}

TEST(MRVOperationProcess, MapsStatuses)
{
    for (const int code : {200, 201, 204, 207, 401, 403, 404})
        EXPECT_EQ(statusOf(code), MRVStatusCode(code));
    for (const int code : {202, 400, 412, 500, 599})
        EXPECT_EQ(statusOf(code), MRVStatusCode::other);
}

TEST(MRVOperationProcess, HasNoStatusWithoutAnHTTPResponse)
{
    const LogRecorder log;
    const auto [data, error, status]
        = run("== probe\n> GET /x\n@ error 4 no route\n")->outcome.arguments();
    EXPECT_EQ(error->localizedDescription, "no route");
    EXPECT_EQ(status, std::nullopt);
    EXPECT_TRUE(log.holds("error in fetching Probe, no route"));

    const auto other = run("== probe\n> GET /x\n@ not-http\n")->outcome.arguments();
    EXPECT_FALSE(std::get<1>(other) || std::get<2>(other));
    EXPECT_TRUE(log.holds("unknown response"));
}

TEST(MRVOperationProcessDeathTest, StopsTheProcessWhereNothingSensibleIsLeft)
{
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_DEATH(run("== p\n> GET /x\n@ no-response\n"), "neither a response nor an error");
    EXPECT_DEATH(run("== p\n> GET /x\n< HTTP/1.1 200 OK\n<\n<| \\xff\n"), "not UTF-8");
    EXPECT_DEATH(run("", nullptr), "auth delegate is gone");
    EXPECT_DEATH(Probe().absoluteURL("/x"), "neither client nor account-info provider");
    EXPECT_DEATH(URLRequest("http://[broken"), "not a valid URL");
}

TEST(MRVOperation, JoinsPathsToTheServer)
{
    const auto joined = [](std::string serverURL, std::string_view path) {
        Probe probe;
        probe.client = std::make_shared<MRVClient>(
            std::make_shared<MRVAccount>(
                MRVAccount {.identifier = "a", .email = "", .serverURL = std::move(serverURL)}),
            nullptr);
        return probe.absoluteURL(path);
    };
    EXPECT_EQ(joined("https://h:8443/", "/cal/"), "https://h:8443/cal/");
    EXPECT_EQ(joined("https://h:8443/", "https://other/cal/"), "https://other/cal/");
    EXPECT_EQ(joined("https://h//", "/cal/"), "https://h//cal/");
    EXPECT_EQ(joined("https://h", ""), "https://h");
}
