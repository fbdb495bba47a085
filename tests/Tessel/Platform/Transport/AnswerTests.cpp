#include "Tessel/Platform/Transport/AnswerCollector.h"
#include "tests/Tessel/Platform/Transport/Exchanges.h"

#include "tests/support/ScriptedServer.h"

#include <map>

namespace Tessel::Test {

namespace {

using namespace std::chrono_literals;

constexpr auto unusual = TESSEL_TEST_DATA "/scripts/answers.script";

TEST(Answer, ThatIsUnusualIsTaken)
{
    const auto script = Script::load(unusual);
    for (const auto& one : script.exchanges) {
        SCOPED_TRACE(one.title);
        ScriptedServer server(script.only(one.title));
        MCurlNetworkManager manager;
        const auto result = get(manager, server.url("/"));
        EXPECT_FALSE(result.error) << result.error->localizedDescription;
        EXPECT_EQ(result.status(), 200);
        EXPECT_EQ(result.body, "body");
    }
}

TEST(Answer, ThatIsBrokenIsOneError)
{
    const std::map<std::string, MNetworkErrorCode> codes {
        {"connectionLost", MNetworkErrorCode::connectionLost},
        {"malformedAnswer", MNetworkErrorCode::malformedAnswer},
        {"timedOut", MNetworkErrorCode::timedOut},
    };
    const auto script = Script::load(TESSEL_TEST_DATA "/scripts/broken-answers.script");
    for (const auto& broken : script.exchanges) {
        SCOPED_TRACE(broken.title);
        const auto expected = codes.at(broken.title.substr(0, broken.title.find(':')));
        ScriptedServer server(script.only(broken.title));
        MCurlNetworkManager manager;
        auto request = URLRequest(server.url("/"));
        if (expected == MNetworkErrorCode::timedOut) request.timeoutInterval = 100ms;
        const Done done;
        manager.send({.request = request, .completionHandler = done});
        const auto result = outcome(done);
        EXPECT_EQ(result.errorCode(), expected)
            << (result.error ? result.error->localizedDescription : "");
        EXPECT_EQ(result.body, "");
        // Another exchange on the same thread comes after whatever the first might still do.
        get(manager, "http://127.0.0.1:1/");
        EXPECT_EQ(done.count(), 1u);
    }
}

TEST(Answer, HeaderFieldsAreThoseOfTheFinalHead)
{
    MCurlNetworkManager manager;
    const auto headersOf = [&](const char* title) {
        ScriptedServer server(Script::load(unusual).only(title));
        return get(manager, server.url("/")).response->headers;
    };
    const auto repeated = headersOf("repeated fields");
    EXPECT_EQ(repeated.value("ALLOW"), "OPTIONS, GET, PUT, MKCALENDAR");
    EXPECT_EQ(repeated.fields()[0].first, "Allow");
    EXPECT_EQ(repeated.value("dav"), "1, calendar-access");
    EXPECT_EQ(repeated.value("X-Empty"), "");
    const auto interim = headersOf("interim answers");
    EXPECT_FALSE(interim.value("X-Interim"));
    EXPECT_EQ(interim.value("X-Final"), "1");
    EXPECT_FALSE(headersOf("chunked with a trailer").value("X-Trailer"));
    EXPECT_EQ(headersOf("folded field").value("X-Folded"), "one two");
    EXPECT_EQ(headersOf("no reason and odd blanks").value("X-Odd"), "value");
}

TEST(Answer, OfSlowServerIsTakenWhileItMoves)
{
    ScriptedServer server(Script::parse(
        "== slow\n> GET /\n@ trickle 5\n< HTTP/1.1 200 OK\n<\n< " + std::string(150, 'x') + "\n"));
    MCurlNetworkManager manager;
    auto request = URLRequest(server.url("/"));
    request.timeoutInterval = 400ms;
    EXPECT_EQ(exchange(manager, request).body.size(), 150u);
}

TEST(Answer, WithoutABodyHasNone)
{
    ScriptedServer server(Script::load(TESSEL_TEST_DATA "/scripts/empty-answers.script"));
    MCurlNetworkManager manager;
    EXPECT_EQ(exchange(manager, makeRequest("HEAD", server.url("/"))).status(), 200);
    for (const int status : {204, 304, 300, 302}) {
        const auto result = get(manager, server.url("/"));
        EXPECT_EQ(result.status(), status);
        EXPECT_EQ(result.body, "");
    }
    EXPECT_EQ(server.connectionCount(), 1u);
}

TEST(Answer, LargerThanAllowedIsAnError)
{
    MCurlNetworkManager manager;
    const auto ask = [&](const Script& script, std::uint64_t limit) {
        ScriptedServer server(script);
        manager.setConfiguration({.maximumAnswerSize = limit});
        return get(manager, server.url("/")).errorCode();
    };
    const auto answer = [](const std::string& lines) {
        return Script::parse("== it\n> GET /\n< HTTP/1.1 200 OK\n" + lines);
    };
    // The head counts for itself.
    const auto plain = answer("<\n< " + std::string(1000, 'x') + "\n");
    EXPECT_EQ(ask(plain, 1000), std::nullopt);
    EXPECT_EQ(ask(plain, 999), MNetworkErrorCode::answerTooLarge);
    const auto lying = answer("< Content-Length: 999999999999999\n<\n< x\n@ close\n");
    EXPECT_EQ(ask(lying, std::uint64_t {1} << 62), MNetworkErrorCode::connectionLost);

    std::string fields;
    for (int i = 0; i < 2000; ++i)
        fields += "< X-" + std::to_string(i) + ": v\n";
    EXPECT_EQ(ask(answer(fields), 1 << 20), MNetworkErrorCode::answerTooLarge);

    const auto compressed = Script::load(TESSEL_TEST_DATA "/scripts/compressed.script");
    EXPECT_EQ(ask(compressed.only("a million"), 1'000'000), std::nullopt);
    EXPECT_EQ(ask(compressed.only("a million"), 999'999), MNetworkErrorCode::answerTooLarge);
    EXPECT_EQ(ask(compressed.only("sixteen million"), 1 << 30), MNetworkErrorCode::answerTooLarge);
}

/// Multistatus answers of events that differ in hardly more than their numbers become 76 times
/// what arrives; libcurl may be one buffer behind in telling how much that is.
TEST(Answer, MayBecomeManyTimesWhatArrives)
{
    constexpr std::int64_t buffer = 16 * 1024;
    const auto isTaken = [&](std::size_t factor) {
        const std::string expanded(buffer * factor, 'x');
        AnswerCollector collector(1 << 30);
        for (std::int64_t arrived = 0; arrived < 10 * buffer; arrived += buffer) {
            if (!collector.takeBody(expanded, -1, arrived)) return false;
        }
        return true;
    };
    EXPECT_TRUE(isTaken(100));
    EXPECT_FALSE(isTaken(200));
}

class RecordingDelegate final : public MTaskDelegate {
public:
    void downloadCompleted(const std::optional<std::string>& identifier, const Data& data) override
    {
        calls.push_back(identifier.value_or("?") + " got " + std::string(data.view()));
    }
    void taskDidReceiveError(
        const std::optional<std::string>& identifier, int code, const std::string& message) override
    {
        EXPECT_FALSE(message.empty());
        calls.push_back(identifier.value_or("?") + " failed " + std::to_string(code));
    }
    std::vector<std::string> calls;
};

TEST(Answer, IsToldToTheDelegate)
{
    ScriptedServer server(Script::parse(hello));
    MCurlNetworkManager manager;
    const auto delegate = std::make_shared<RecordingDelegate>();
    for (const auto& url : {server.url("/"), std::string("http://127.0.0.1:1/")}) {
        exchange(manager,
            MTask {.request = URLRequest(url),
                .delegate = delegate,
                .identifier = "task",
                .completionHandler = {}});
    }
    EXPECT_EQ(delegate->calls, (std::vector<std::string> {"task got hello", "task failed 3"}));
}

} // namespace

} // namespace Tessel::Test
