#include "Tessel/Platform/Transport/MTaskRedirectionDelegate.h"
#include "tests/Tessel/Platform/Transport/Exchanges.h"

#include "tests/support/ScriptedServer.h"

namespace Tessel::Test {

namespace {

/// A delegate that takes redirects, or lets them be.
class Redirections final : public MTaskDelegate, public MTaskRedirectionDelegate {
public:
    explicit Redirections(bool takes)
        : takes_(takes)
    {
    }
    void downloadCompleted(const std::optional<std::string>&, const Data&) override { }
    void taskDidReceiveError(const std::optional<std::string>&, int, const std::string&) override {
    }
    bool didRequestHTTPRedirection(const URLRequest& original, const URLRequest& next) override
    {
        offered(original, next);
        return takes_;
    }
    Callback<URLRequest, URLRequest> offered;

private:
    const bool takes_;
};

URLRequest propfind(const std::string& url)
{
    auto request = makeRequest("PROPFIND", url, "<propfind/>");
    request.headers.set("Depth", "0");
    request.headers.set("Authorization", "Basic dTpw");
    request.headers.set("Content-Type", "text/xml");
    return request;
}

/// Sends a GET of "/" with that delegate.
Outcome getOffering(MNetworkManager& manager, const ScriptedServer& server,
    const std::shared_ptr<Redirections>& delegate)
{
    return exchange(manager,
        MTask {
            .request = URLRequest(server.url("/")), .delegate = delegate, .completionHandler = {}});
}

TEST(Redirect, RepeatsTheRequestAtTheNewPlace)
{
    ScriptedServer server(Script::load(TESSEL_TEST_DATA "/scripts/kept-redirects.script"));
    MCurlNetworkManager manager;
    for (int redirect = 0; redirect < 4; ++redirect) {
        const Callback<URLRequest> told;
        const auto result = exchange(manager,
            MTask {.request = propfind(server.url("/from/a")),
                .redirectionHandler = told,
                .completionHandler = {}});
        EXPECT_EQ(result.status(), 207);
        EXPECT_EQ(result.body, "this");
        EXPECT_FALSE(result.response->headers.value("Location"));
        EXPECT_EQ(result.response->url, server.url("/to/b%20c"));
        ASSERT_EQ(told.count(), 1u);
        EXPECT_EQ(std::get<0>(told.arguments()).url(), server.url("/to/b%20c"));
    }
}

TEST(Redirect, With303BecomesAGetWithoutBody)
{
    ScriptedServer server(Script::parse(R"(
== from
> POST /from
< HTTP/1.1 303 See Other
< Location: {{base}}/to
== to
> GET /to
> Authorization: Basic dTpw
> !Content-Length
> !Content-Type
>
< HTTP/1.1 200 OK
)"));
    MCurlNetworkManager manager;
    auto request = propfind(server.url("/from"));
    request.method = "POST";
    EXPECT_EQ(exchange(manager, request).status(), 200);
}

TEST(Redirect, ToAnotherHostOrPortCarriesNoCredentials)
{
    ScriptedServer other(Script::parse(R"(
== elsewhere
> PROPFIND /to
> !Authorization
> !Cookie
> Depth: 0
>
> <propfind/>
@ repeat
< HTTP/1.1 200 OK
)"));
    ScriptedServer server(Script::parse(R"(
== to another port
> PROPFIND /from
> Authorization: Bearer t
> Cookie: a=b
< HTTP/1.1 301 Moved
< Location: )"
        + other.url("/to") + R"(
== to another name
> PROPFIND /from
< HTTP/1.1 301 Moved
< Location: )"
        + other.url("/to", "localhost") + "\n"));
    MCurlNetworkManager manager;
    auto request = propfind(server.url("/from"));
    request.headers.set("Cookie", "a=b");
    MTask task {.request = request, .authorization = "Bearer t", .completionHandler = {}};
    EXPECT_EQ(exchange(manager, task).status(), 200);
    task.authorization.reset();
    EXPECT_EQ(exchange(manager, task).status(), 200);
}

TEST(Redirect, FromHttpsToHttpIsRefusedEvenBeforeTheDelegate)
{
    TestAuthority authority;
    ScriptedServer plain(Script {});
    ScriptedServer server(Script::parse("== from\n> GET /\n< HTTP/1.1 302 Found\n< Location: "
                              + plain.url("/") + "\n"),
        ScriptedServer::Security {authority.issue({"IP:127.0.0.1"})});
    MCurlNetworkManager manager({.authorityFile = authority.file()});
    const auto delegate = std::make_shared<Redirections>(true);
    const auto result = getOffering(manager, server, delegate);
    EXPECT_EQ(result.errorCode(), MNetworkErrorCode::unsafeRedirect);
    EXPECT_EQ(delegate->offered.count(), 0u);
}

TEST(Redirect, ToWhatIsNoHTTPAddressIsRefused)
{
    for (const auto* location :
        {"file:///etc/passwd", "ftp://127.0.0.1/", "http://[::1", "http://h:99999/"}) {
        ScriptedServer server(Script::parse(
            std::string("== from\n> GET /\n< HTTP/1.1 301 Moved\n< Location: ") + location + "\n"));
        MCurlNetworkManager manager;
        EXPECT_EQ(get(manager, server.url("/")).errorCode(), MNetworkErrorCode::unsafeRedirect)
            << location;
    }
}

TEST(Redirect, IsFollowedTenTimesAndNoMore)
{
    std::string hops;
    for (int i = 0; i < 10; ++i) {
        hops += "== hop\n> GET /" + std::to_string(i)
            + "\n< HTTP/1.1 301 Moved\n< Location: " + std::to_string(i + 1) + "\n";
    }
    const auto tenthLeadsTo = [&](const std::string& answer) {
        ScriptedServer server(Script::parse(hops + "== last\n> GET /10\n< HTTP/1.1 " + answer));
        MCurlNetworkManager manager;
        return get(manager, server.url("/0"));
    };
    EXPECT_EQ(tenthLeadsTo("200 OK\n").status(), 200);
    EXPECT_EQ(tenthLeadsTo("301 Moved\n< Location: 11\n").errorCode(),
        MNetworkErrorCode::tooManyRedirects);
}

TEST(Redirect, LoopEndsThoughTheDelegateWouldTakeIt)
{
    ScriptedServer server(
        Script::parse("== loop\n> GET /\n@ repeat\n< HTTP/1.1 301 Moved\n< Location: /\n"));
    MCurlNetworkManager manager;
    const auto delegate = std::make_shared<Redirections>(true);
    EXPECT_EQ(
        getOffering(manager, server, delegate).errorCode(), MNetworkErrorCode::tooManyRedirects);
    EXPECT_EQ(server.rawRequests().size(), 11u);
}

TEST(Redirect, ThatTheDelegateTakesEndsTheTaskWithoutCompletion)
{
    ScriptedServer server(Script::load(TESSEL_TEST_DATA "/scripts/offered-redirects.script"));
    MCurlNetworkManager manager;
    const Done done;
    const auto takes = std::make_shared<Redirections>(true);
    MTask task {
        .request = propfind(server.url("/from")), .delegate = takes, .completionHandler = done};
    manager.send(task);
    ASSERT_TRUE(takes->offered.wait());
    const auto [original, next] = takes->offered.arguments();
    EXPECT_EQ(original.url(), server.url("/from"));
    EXPECT_EQ(next.url(), server.url("/to"));
    EXPECT_EQ(next.method, "PROPFIND");
    EXPECT_EQ(next.body, original.body);

    // One that lets it be hears of the first redirect only; the transport follows by itself.
    const auto ignores = std::make_shared<Redirections>(false);
    task.delegate = ignores;
    task.completionHandler = nullptr;
    EXPECT_EQ(exchange(manager, task).status(), 200);
    EXPECT_EQ(ignores->offered.count(), 1u);
    EXPECT_EQ(done.count(), 0u);
}

} // namespace

} // namespace Tessel::Test
