#include "tests/integration/ServerTest.h"

#include <algorithm>
#include <cctype>

namespace Tessel::Test {
namespace {

class DiscoveryTest : public ServerTest { };
class SchedulingDiscoveryTest : public ServerTest { };

TEST_P(DiscoveryTest, FindsTheHomeAndItsMethodsFromHostNameAndPort)
{
    const auto alice = discovered("alice");
    EXPECT_EQ(alice.account->serverURL, "https://" + server().address());
    EXPECT_EQ(alice.account->calendarHomeURL, isCyrus() ? "/dav/calendars/user/alice/" : "/alice/");
    // Cyrus does not offer to delete the home, which is what is asked.
    const MRVSupportedMethod always {
        MRVSupportedMethod::makeCal, MRVSupportedMethod::propertyPatch};
    EXPECT_EQ(alice.account->supportedMethod,
        isCyrus() ? always : always | MRVSupportedMethod::deleteCal);
    if (isCyrus()) return;
    EXPECT_EQ(alice.account->principalURL, "/alice/");
    EXPECT_EQ(alice.account->calendarUserAddressSet, (std::vector<std::string> {"/alice/"}));
    EXPECT_EQ(alice.account->scheduleInboxURL, std::nullopt);
    EXPECT_EQ(alice.account->notificationURL, std::nullopt);
}

TEST_P(SchedulingDiscoveryTest, FindsTheCollectionsOfSchedulingAndSharing)
{
    const auto alice = discovered("alice");
    EXPECT_EQ(alice.account->principalURL, "/dav/principals/user/alice/");
    EXPECT_EQ(alice.account->scheduleInboxURL, "/dav/calendars/user/alice/Inbox/");
    EXPECT_EQ(alice.account->scheduleOutboxURL, "/dav/calendars/user/alice/Outbox/");
    EXPECT_EQ(alice.account->notificationURL, "/dav/notifications/user/alice/");
    ASSERT_TRUE(alice.account->calendarUserAddressSet);
    const auto& addresses = *alice.account->calendarUserAddressSet;
    EXPECT_EQ(std::count(addresses.begin(), addresses.end(), "mailto:alice@example.com"), 1);
}

TEST_P(SchedulingDiscoveryTest, SpeaksTheSecondVersionOfHTTP)
{
    discovered("alice");
    const auto answer = transport().last("OPTIONS");
    ASSERT_TRUE(answer);
    ASSERT_FALSE(answer->headers.fields().empty());
    for (const auto& [name, value] : answer->headers.fields()) {
        EXPECT_TRUE(
            std::none_of(name.begin(), name.end(), [](unsigned char c) { return std::isupper(c); }))
            << name << ": only HTTP/2 sends every name in small letters";
    }
}

TESSEL_ON_SERVERS(DiscoveryTest, "radicale", "cyrus");
TESSEL_ON_SERVERS(SchedulingDiscoveryTest, "cyrus");

} // namespace
} // namespace Tessel::Test
