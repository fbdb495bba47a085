#include "support/ScriptedTransport.h"

#include "Platform/Foundation/HTTPURLResponse.h"
#include "Platform/Transport/MNetworkError.h"

#include <gtest/gtest-spi.h>
#include <gtest/gtest.h>

namespace Tessel::Test {

namespace {

using Done = Callback<Data, std::shared_ptr<const URLResponse>, std::optional<std::string>,
    std::optional<Error>, int>;

void send(ScriptedTransport& transport, const Done& done, const char* method, const char* url)
{
    MTask task {.request = URLRequest(url), .completionHandler = done};
    task.request.method = method;
    transport.send(std::move(task));
}

TEST(ScriptedTransport, AnswersAsWritten)
{
    ScriptedTransport transport(Script::parse(R"(
== listing
> PROPFIND /home/?a=b
< HTTP/1.1 207 Multi-Status
< Allow: GET
< allow: PUT
<
< first
< second
<| \r\n\x41
== failure
> GET /
@ error 5 too slow
)"));
    Done done;
    send(transport, done, "PROPFIND", "https://server.example/home/?a=b");
    send(transport, done, "GET", "https://server.example");
    ASSERT_TRUE(transport.waitUntilPlayed());
    ASSERT_EQ(done.count(), 2u);
    const auto [body, response, text, error, number] = done.arguments(0);
    EXPECT_EQ(body.view(), "first\nsecond\r\nA");
    const auto& http = dynamic_cast<const HTTPURLResponse&>(*response);
    EXPECT_EQ(http.statusCode, 207);
    EXPECT_EQ(http.headers.value("Allow"), "GET, PUT");
    EXPECT_EQ(http.headers.value("Content-Length"), "15");
    EXPECT_EQ(std::get<3>(done.arguments(1))->localizedDescription, "too slow");
}

TEST(ScriptedTransport, HoldsAnAnswerUntilItIsReleased)
{
    ScriptedTransport transport(Script::parse(R"(
== held
> GET /a
@ hold
< HTTP/1.1 200 OK
== at once
> GET /b
< HTTP/1.1 204 No Content
)"));
    Done held;
    Done atOnce;
    send(transport, held, "GET", "http://h/a");
    send(transport, atOnce, "GET", "http://h/b");
    ASSERT_TRUE(atOnce.wait());
    EXPECT_TRUE(transport.waitUntilHeld());
    EXPECT_EQ(held.count(), 0u);
    transport.release();
    ASSERT_TRUE(transport.waitUntilPlayed());
    EXPECT_EQ(held.count(), 1u);
}

TEST(ScriptedTransport, FollowsRedirects)
{
    ScriptedTransport transport(Script::parse(R"(
== from
> GET /from
< HTTP/1.1 301 Moved
< Location: {{base}}/to
== to
> GET /to
< HTTP/1.1 302 Found
< Location: http://h/downgrade
)"));
    Done done;
    send(transport, done, "GET", "https://h/from");
    ASSERT_TRUE(transport.waitUntilPlayed());
    ASSERT_EQ(done.count(), 1u);
    EXPECT_EQ(
        std::get<3>(done.arguments())->code, static_cast<int>(MNetworkErrorCode::unsafeRedirect));
}

TEST(ScriptedTransport, FailsTheTestForWhatTheScriptDoesNotSay)
{
    constexpr auto script = "== only\n> GET /\n> X: 1\n< HTTP/1.1 200 OK\n";
    EXPECT_NONFATAL_FAILURE(
        { ScriptedTransport transport(Script::parse(script)); }, "was not asked for: only");
    EXPECT_NONFATAL_FAILURE(
        {
            ScriptedTransport transport(Script::parse(script));
            send(transport, Done(), "GET", "http://h/");
        },
        "the request has no X");
    EXPECT_NONFATAL_FAILURE(
        {
            ScriptedTransport transport(Script {});
            send(transport, Done(), "GET", "http://h/");
        },
        "not expected here: GET /");
}

} // namespace

} // namespace Tessel::Test
