#include "tests/Tessel/Platform/Transport/Exchanges.h"

#include "tests/support/KeptProgram.h"
#include "tests/support/ScriptedServer.h"
#include "tests/support/TestAuthority.h"

namespace Tessel::Test {

namespace {

class Http2 : public testing::Test {
protected:
    void SetUp() override { ASSERT_NE(server.line(), "") << "http2-server did not start"; }

    std::string at(const std::string& path) const
    {
        return "https://127.0.0.1:" + server.line() + path;
    }
    /// Sends two requests over one connection, the second of which is not answered, and gives how
    /// that one ended.
    Outcome second(const std::string& method, const std::string& path) const
    {
        MCurlNetworkManager manager({.authorityFile = authority.file()});
        get(manager, at("/"));
        return exchange(manager, makeRequest(method, at(path), "body"));
    }
    /// The requests that were not answered, since the last look.
    std::string unanswered()
    {
        MCurlNetworkManager manager({.authorityFile = authority.file()});
        const auto all = get(manager, at("/seen")).body;
        return all.substr(std::exchange(looked, all.size()));
    }

    TestAuthority authority;
    const Identity identity = authority.issue({"IP:127.0.0.1"});
    KeptProgram server {
        {TESSEL_TEST_DATA "/http2-server", identity.certificateFile, identity.keyFile}};
    std::size_t looked = 0;
};

/// Not even where the server says that it has not looked at it, which libcurl would repeat.
TEST_F(Http2, WritesAreSentOnce)
{
    for (const auto* path : {"/close", "/reset", "/refuse", "/goaway"}) {
        for (const std::string method : {"PUT", "POST", "MOVE", "MKCALENDAR", "DELETE"}) {
            EXPECT_EQ(second(method, path).errorCode(), MNetworkErrorCode::connectionLost)
                << method << " " << path;
            const auto seen = unanswered();
            EXPECT_EQ(seen.substr(seen.find_first_not_of(' ')), method) << path;
        }
    }
    // None of them counts as a try of another exchange, which is sent again.
    ScriptedServer plain(Script::parse("== kept\n> GET /\n< HTTP/1.1 200 OK\n"
                                       "== read, not answered\n> GET /\n@ close\n"
                                       "== again\n> GET /\n< HTTP/1.1 200 OK\n"));
    MCurlNetworkManager manager;
    get(manager, plain.url("/"));
    EXPECT_EQ(get(manager, plain.url("/")).status(), 200);
}

} // namespace

} // namespace Tessel::Test
