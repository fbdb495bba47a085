#include "tests/Tessel/Platform/Transport/Exchanges.h"

#include "tests/support/ScriptedServer.h"

#include <cstdlib>
#include <filesystem>

namespace Tessel::Test {

namespace {

constexpr auto refused = MNetworkErrorCode::untrusted;

class Security : public testing::Test {
protected:
    Outcome ask(const MNetworkConfiguration& configuration, const Identity& identity,
        const std::string& clientAuthority = {}, const std::string& host = "127.0.0.1")
    {
        ScriptedServer server(
            Script::parse(hello), ScriptedServer::Security {identity, clientAuthority});
        MCurlNetworkManager manager(configuration);
        return get(manager, server.url("/", host));
    }

    TestAuthority authority;
    const Identity identity = authority.issue({"IP:127.0.0.1", "DNS:localhost"});
    const MNetworkConfiguration trusting {.authorityFile = authority.file()};
};

TEST_F(Security, AuthorityIsAFileOrADirectory)
{
    EXPECT_EQ(ask(trusting, identity).body, "hello");
    EXPECT_EQ(ask({.authorityDirectory = authority.directory()}, identity).body, "hello");
    EXPECT_EQ(ask(trusting, identity, {}, "localhost").body, "hello");
}

TEST_F(Security, UnprovenServerIsRefused)
{
    const TestAuthority other;
    for (const MNetworkConfiguration& distrusting :
        {MNetworkConfiguration {}, {.authorityFile = other.file()},
            {.authorityDirectory = other.directory()}, {.authorityFile = "/nonexistent"}})
        EXPECT_EQ(ask(distrusting, identity).errorCode(), refused);
    for (const auto& unproven :
        {authority.issue({"DNS:other.example"}), authority.issue({"IP:127.0.0.1"}, true)})
        EXPECT_EQ(ask(trusting, unproven).errorCode(), refused);
}

TEST_F(Security, EnvironmentNamesNoAuthority)
{
    setenv("SSL_CERT_FILE", authority.file().c_str(), 1);
    setenv("SSL_CERT_DIR", authority.directory().c_str(), 1);
    setenv("CURL_CA_BUNDLE", authority.file().c_str(), 1);
    EXPECT_EQ(ask({}, identity).errorCode(), refused);
    for (const auto* name : {"SSL_CERT_FILE", "SSL_CERT_DIR", "CURL_CA_BUNDLE"})
        unsetenv(name);
}

/// libcurl looks for the variable once, so the process must not have sent anything yet.
TEST_F(Security, KeysOfConnectionsAreWrittenNowhere)
{
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    const auto writesNone = [&] {
        const TemporaryDirectory directory;
        const auto file = directory.path() / "keys";
        setenv("SSLKEYLOGFILE", file.c_str(), 1);
        const auto body = ask(trusting, identity).body;
        const bool isEmpty = !std::filesystem::exists(file) || std::filesystem::is_empty(file);
        std::exit(body == "hello" && isEmpty ? 0 : 1);
    };
    EXPECT_EXIT(writesNone(), testing::ExitedWithCode(0), "^$");
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
    EXPECT_EQ(get(manager, server.url("/")).errorCode(), refused);
    manager.setConfiguration(trusting);
    EXPECT_EQ(get(manager, server.url("/")).body, "hello");
    // A connection that one configuration trusts is not used under another.
    manager.setConfiguration({});
    EXPECT_EQ(get(manager, server.url("/")).errorCode(), refused);
}

TEST_F(Security, OldProtocolVersionsAreRefused)
{
    ScriptedServer server(Script::parse(hello), ScriptedServer::Security {identity, {}, true});
    MCurlNetworkManager manager(trusting);
    EXPECT_EQ(get(manager, server.url("/")).errorCode(), refused);
}

TEST_F(Security, PlainServerUnderHttpsIsRefused)
{
    ScriptedServer server(Script {});
    MCurlNetworkManager manager(trusting);
    auto request = URLRequest("https" + server.url("/").substr(std::string("http").size()));
    request.timeoutInterval = std::chrono::milliseconds(200);
    EXPECT_TRUE(exchange(manager, request).error);
}

} // namespace

} // namespace Tessel::Test
