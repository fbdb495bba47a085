#include "Exchanges.h"

#include "support/ScriptedServer.h"

#include <cstdlib>

namespace Tessel::Test {

namespace {

constexpr auto hello = "== hello\n> GET /\n@ repeat\n< HTTP/1.1 200 OK\n<\n< hello\n";

class Security : public testing::Test {
protected:
    Outcome ask(const MNetworkConfiguration& configuration, const Identity& identity,
        const std::string& clientAuthority = {}, const std::string& host = "127.0.0.1")
    {
        ScriptedServer server(
            Script::parse(hello), ScriptedServer::Security {identity, clientAuthority});
        MCurlNetworkManager manager(configuration);
        return exchange(manager, URLRequest(server.url("/", host)));
    }

    TestAuthority authority;
    const Identity identity = authority.issue({"IP:127.0.0.1", "DNS:localhost"});
};

TEST_F(Security, AuthorityIsAFileOrADirectory)
{
    EXPECT_EQ(ask({.authorityFile = authority.file()}, identity).body, "hello");
    EXPECT_EQ(ask({.authorityDirectory = authority.directory()}, identity).body, "hello");
    EXPECT_EQ(ask({.authorityFile = authority.file()}, identity, {}, "localhost").body, "hello");
}

TEST_F(Security, UnprovenServerIsRefused)
{
    const auto refused = MNetworkErrorCode::untrusted;
    EXPECT_EQ(ask({}, identity).errorCode(), refused) << "unknown authority";
    TestAuthority other;
    EXPECT_EQ(ask({.authorityFile = other.file()}, identity).errorCode(), refused);
    EXPECT_EQ(ask({.authorityDirectory = other.directory()}, identity).errorCode(), refused);
    EXPECT_EQ(ask({.authorityFile = "/nonexistent"}, identity).errorCode(), refused);

    const MNetworkConfiguration trusting {.authorityFile = authority.file()};
    EXPECT_EQ(ask(trusting, authority.issue({"DNS:other.example"})).errorCode(), refused) << "name";
    EXPECT_EQ(ask(trusting, authority.issue({"IP:127.0.0.1"}, true)).errorCode(), refused)
        << "expired";
}

TEST_F(Security, EnvironmentNamesNoAuthority)
{
    setenv("SSL_CERT_FILE", authority.file().c_str(), 1);
    setenv("SSL_CERT_DIR", authority.directory().c_str(), 1);
    setenv("CURL_CA_BUNDLE", authority.file().c_str(), 1);
    EXPECT_EQ(ask({}, identity).errorCode(), MNetworkErrorCode::untrusted);
    for (const auto* name : {"SSL_CERT_FILE", "SSL_CERT_DIR", "CURL_CA_BUNDLE"})
        unsetenv(name);
}

TEST_F(Security, ClientProvesItselfWithItsCertificate)
{
    TestAuthority clients;
    const auto own = clients.issue({"DNS:client"});
    const auto stranger = authority.issue({"DNS:client"});
    const auto askAs = [&](const Identity& client) {
        return ask({.authorityFile = authority.file(),
                       .clientCertificateFile = client.certificateFile,
                       .clientKeyFile = client.keyFile},
            identity, clients.file());
    };
    EXPECT_EQ(askAs(own).body, "hello");
    EXPECT_TRUE(askAs(stranger).error);
    EXPECT_TRUE(askAs({}).error);
}

TEST_F(Security, ConfigurationHoldsForTasksSentLater)
{
    ScriptedServer server(Script::parse(hello), ScriptedServer::Security {identity});
    MCurlNetworkManager manager;
    EXPECT_EQ(
        exchange(manager, URLRequest(server.url("/"))).errorCode(), MNetworkErrorCode::untrusted);
    manager.setConfiguration({.authorityFile = authority.file()});
    EXPECT_EQ(exchange(manager, URLRequest(server.url("/"))).body, "hello");
    // A connection that one configuration trusts is not used under another.
    manager.setConfiguration({});
    EXPECT_EQ(
        exchange(manager, URLRequest(server.url("/"))).errorCode(), MNetworkErrorCode::untrusted);
}

TEST_F(Security, OldProtocolVersionsAreRefused)
{
    ScriptedServer server(Script::parse(hello), ScriptedServer::Security {identity, {}, true});
    MCurlNetworkManager manager({.authorityFile = authority.file()});
    EXPECT_EQ(
        exchange(manager, URLRequest(server.url("/"))).errorCode(), MNetworkErrorCode::untrusted);
}

TEST_F(Security, PlainServerUnderHttpsIsRefused)
{
    ScriptedServer server(Script {});
    MCurlNetworkManager manager({.authorityFile = authority.file()});
    auto url = server.url("/").insert(4, "s");
    auto request = URLRequest(url);
    request.timeoutInterval = std::chrono::milliseconds(200);
    EXPECT_TRUE(exchange(manager, request).error);
}

} // namespace

} // namespace Tessel::Test
