#include "tests/apps/tessel/ToolWorld.h"
#include "tests/support/Listener.h"
#include "tests/support/TestAuthority.h"

#include <gtest/gtest.h>

#include <string_view>
#include <thread>

using namespace Tessel;
using namespace Tessel::Test;
using Reply = FakeCalendarServer::Reply;

namespace {

/// Answers a greeting in TLS as a server without it does.
class PlainServer {
public:
    ~PlainServer()
    {
        ::shutdown(listener_.socket, SHUT_RDWR);
        thread_.join();
    }

    std::string secureAddress() const
    {
        return "https://127.0.0.1:" + std::to_string(listener_.port);
    }

private:
    void run() const
    {
        for (int client = 0; (client = ::accept(listener_.socket, nullptr, nullptr)) >= 0;) {
            constexpr std::string_view answer = "HTTP/1.1 400 Bad Request\r\n\r\n";
            char greeting[4096];
            if (::read(client, greeting, sizeof greeting) > 0) {
                EXPECT_EQ(::write(client, answer.data(), answer.size()), ssize_t(answer.size()));
            }
            ::close(client);
        }
    }

    const Listener listener_;
    std::thread thread_ {[this] { run(); }};
};

Words addAt(const std::string& server)
{
    return {"account", "add", "--server", server, "--user", "alice"};
}

} // namespace

/// Each sentence in which the library advises a program, as a user gets it. The one about DNS is in
/// ServiceLookupTests.
TEST(Reason, SpeaksOfOptionsWhereTheLibrarySpeaksOfSettings)
{
    const ToolWorld world(false);
    TestAuthority authority;
    const ScriptedServer secure([](const URLRequest&) { return ScriptedAnswer {}; },
        ScriptedServer::Security {authority.issue({"IP:127.0.0.1"})});
    const PlainServer plain;
    const auto elsewhere = [](const URLRequest&, const auto&) {
        Reply reply {.status = 301};
        reply.headers.set("Location", "https://elsewhere.example/");
        return std::optional(reply);
    };
    const auto homeElsewhere = [](const URLRequest&, const auto&) {
        return std::optional(Reply {.status = 207,
            .body = "<d:multistatus xmlns:d=\"DAV:\" xmlns:c=\"urn:ietf:params:xml:ns:caldav\">"
                    "<d:response><d:href>/</d:href><d:propstat><d:prop><d:current-user-principal>"
                    "<d:href>https://elsewhere.example/alice/</d:href></d:current-user-principal>"
                    "</d:prop><d:status>HTTP/1.1 200 OK</d:status></d:propstat></d:response>"
                    "</d:multistatus>"});
    };
    auto insecure = addAt(world.address());
    insecure.insert(insecure.begin(), {"--insecure", "--timeout", "1"});
    auto withAuthority = addAt(plain.secureAddress());
    withAuthority.insert(withAuthority.begin(), {"--authority", "/nowhere.pem"});
    const struct {
        Words command;
        FakeCalendarServer::Fault fault;
        std::string says;
    } cases[] {
        {addAt(plain.secureAddress()), {}, "for a server without TLS give http:// and --insecure."},
        {addAt(secure.url("")), {}, "authority of your own, name its file with --authority."},
        {withAuthority, {}, "authorities cannot be read: check --authority."},
        {insecure, [](const auto&, const auto&) { return std::optional(Reply {}); },
            "or allow more time with --timeout."},
        {insecure, elsewhere, "If you trust it, give it as the server."},
        {insecure, homeElsewhere, "If you trust it, give it as the server."},
    };
    for (const auto& [command, fault, says] : cases) {
        world.server->setFault(fault);
        const auto run = world.run(command);
        EXPECT_TRUE(has(run.err, says)) << says << " is not in:\n" << run.err;
        EXPECT_EQ(count(run.err, "\n"), 1U) << run.err;
    }
}

TEST(Reason, IsKeptAsAUserReadsIt)
{
    const ToolWorld world;
    EXPECT_EQ(world.run({"sync"}).status, 0);
    EXPECT_EQ(
        world.run({"--offline", "event", "create", "a", "--summary", "S", "--start", "2027-03-01"})
            .status,
        0);
    world.server->setFault([](const URLRequest& request, const auto&) {
        Reply reply {.status = 308};
        reply.headers.set("Location", "https://elsewhere.example/");
        return request.method == "PUT" ? std::optional(reply) : std::nullopt;
    });
    EXPECT_EQ(world.run({"sync"}).status, 5);
    expectParts(world.run({"pending"}).out, {"If you trust it, give it as the server.", "!\\u{a}"});
}
