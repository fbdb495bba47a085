#include "CaldavLibrary/Configuration.h"
#include "CaldavLibrary/Extensions/URLRequestExtension.h"
#include "CaldavLibrary/Operation/MRVOperation.h"
#include "support/LogRecorder.h"
#include "support/ScriptedTransport.h"
#include "support/TestHost.h"

#include <gtest/gtest.h>

using namespace Tessel;
using namespace Tessel::Test;

namespace {

using Outcome = Callback<Data, std::optional<Error>, std::optional<MRVStatusCode>>;

/// Sends one GET through `process`.
class Probe final : public MRVOperation {
public:
    Outcome outcome;

    void main() override
    {
        URLRequest request(absoluteURL("/x"));
        process(request, "Probe", nullptr, outcome);
        sentUserAgent = request.headers.value("User-Agent");
    }

    std::optional<std::string> sentUserAgent;
};

std::shared_ptr<Probe> run(const std::string& script, const std::shared_ptr<TestHost>& host)
{
    const auto transport = std::make_shared<ScriptedTransport>(Script::parse(script));
    const UseTransport use(transport);
    const auto probe = std::make_shared<Probe>();
    probe->client = std::make_shared<MRVClient>(knownAccount(), host);
    OperationQueue queue;
    queue.addOperation(probe);
    queue.waitUntilAllOperationsAreFinished();
    EXPECT_EQ(probe->outcome.count(), 1u);
    return probe;
}

std::optional<MRVStatusCode> statusOf(int code)
{
    const auto script = "== probe\n> GET /x\n< HTTP/1.1 " + std::to_string(code) + " Text\n";
    const auto probe = run(script, std::make_shared<TestHost>());
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
)",
        std::make_shared<TestHost>());
    EXPECT_EQ(probe->sentUserAgent, "CalDavTest-iOS-Client");
    EXPECT_EQ(std::get<0>(probe->outcome.arguments()).view(), "made");
    EXPECT_EQ(log.lines(),
        (std::vector<std::string> {"response: 4 bytes", "made", "data: 4 bytes, resposeStatus: 201",
            "status: default error : 201"}));
    for (const auto& line : log.lines())
        EXPECT_EQ(line.find("dTpw"), std::string::npos);
}

TEST(MRVOperationProcess, MapsStatuses)
{
    for (const int code : {200, 201, 204, 207, 401, 403, 404}) {
        EXPECT_EQ(statusOf(code), MRVStatusCode(code));
    }
    for (const int code : {202, 400, 412, 500, 599})
        EXPECT_EQ(statusOf(code), MRVStatusCode::other);
    EXPECT_EQ(fromRawValue<MRVStatusCode>(0), MRVStatusCode::other);
    EXPECT_EQ(fromRawValue<MRVStatusCode>(412), std::nullopt);
}

TEST(MRVOperationProcess, PassesTransportErrorsOnWithoutAStatus)
{
    const LogRecorder log;
    const auto probe
        = run("== probe\n> GET /x\n@ error 4 no route\n", std::make_shared<TestHost>());
    const auto [data, error, status] = probe->outcome.arguments();
    EXPECT_EQ(error->localizedDescription, "no route");
    EXPECT_EQ(status, std::nullopt);
    EXPECT_TRUE(log.holds("error in fetching Probe, no route"));
}

TEST(MRVOperationProcess, HasNoStatusForAnotherKindOfResponse)
{
    const LogRecorder log;
    const auto probe = run("== probe\n> GET /x\n@ not-http\n", std::make_shared<TestHost>());
    EXPECT_FALSE(std::get<1>(probe->outcome.arguments()));
    EXPECT_EQ(std::get<2>(probe->outcome.arguments()), std::nullopt);
    EXPECT_TRUE(log.holds("unknown response"));
}

TEST(MRVOperationProcessDeathTest, StopsTheProcessWhereNothingSensibleIsLeft)
{
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    const auto host = std::make_shared<TestHost>();
    EXPECT_DEATH(run("== p\n> GET /x\n@ no-response\n", host), "neither a response nor an error");
    EXPECT_DEATH(run("== p\n> GET /x\n< HTTP/1.1 200 OK\n<\n<| \\xff\n", host), "not UTF-8");
    EXPECT_DEATH(run("", std::shared_ptr<TestHost>()), "auth delegate is gone");
    EXPECT_DEATH(Probe().absoluteURL("/x"), "neither client nor account-info provider");
    EXPECT_DEATH(URLRequest("http://[broken"), "not a valid URL");
}

TEST(MRVOperation, JoinsPathsToTheServer)
{
    Probe probe;
    const auto account = std::make_shared<MRVAccount>(
        MRVAccount {.identifier = "a", .email = "", .serverURL = "https://h:8443/"});
    probe.client = std::make_shared<MRVClient>(account, nullptr);
    EXPECT_EQ(probe.absoluteURL("/cal/"), "https://h:8443/cal/");
    EXPECT_EQ(probe.absoluteURL("https://other/cal/"), "https://other/cal/");
    account->serverURL = "https://h//";
    EXPECT_EQ(probe.absoluteURL("/cal/"), "https://h//cal/");
    account->serverURL = "https://h";
    EXPECT_EQ(probe.absoluteURL(""), "https://h");
}

TEST(MRVOperation, TellsTheAuthDelegateAboutGoogleAccounts)
{
    const auto transport = std::make_shared<ScriptedTransport>(
        Script::parse("== p\n> GET /x\n> Authorization: Bearer token\n< HTTP/1.1 200 OK\n"));
    const UseTransport use(transport);
    const auto host = std::make_shared<TestHost>();
    const auto account = knownAccount();
    account->accountType = MRVAccountType::google;
    const auto probe = std::make_shared<Probe>();
    probe->accountInfoProvider = std::make_shared<MRVAccountInfoProvider>(account, host);
    OperationQueue queue;
    queue.addOperation(probe);
    queue.waitUntilAllOperationsAreFinished();
    EXPECT_TRUE(transport->waitUntilPlayed());
}

TEST(URLRequestBody, DeclaresCharactersNotBytes)
{
    URLRequest request("https://h/");
    setXMLBody(request, "\xC3\xA9");
    EXPECT_EQ(request.headers.value("content-length"), "1");
    EXPECT_EQ(request.headers.value("Content-Type"), "text/xml charset=utf-8");
    EXPECT_EQ(request.body.size(), 2u);
    setICalBody(request, "BEGIN:VCALENDAR");
    EXPECT_EQ(request.headers.value("Content-Type"), "text/calendar");
    EXPECT_EQ(request.headers.value("Content-Length"), "15");
}

TEST(MRVClient, MakesItsSerialQueueOnce)
{
    const auto client = std::make_shared<MRVClient>(knownAccount(), nullptr);
    auto& queue = client->syncQueue();
    EXPECT_EQ(&queue, &client->syncQueue());
    EXPECT_EQ(queue.maxConcurrentOperationCount(), 1);
}

TEST(Configuration, ReplacesTheLogger)
{
    const auto before = Configuration::shared().logger();
    {
        const LogRecorder log;
        Configuration::shared().logger()->log(Plinth::Level::debug, "a", 1, std::optional<int> {});
        EXPECT_EQ(log.lines(), std::vector<std::string> {"a1nil"});
    }
    EXPECT_TRUE(Configuration::shared().logger());
    EXPECT_TRUE(before->isEnabled(Plinth::Level::error));
    EXPECT_FALSE(before->isEnabled(Plinth::Level::warning));
}
