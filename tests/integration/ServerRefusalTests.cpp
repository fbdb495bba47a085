#include "tests/integration/ServerTest.h"
#include "tests/support/ScriptedTransport.h"
#include "tests/support/TestAuthority.h"

namespace Tessel::Test {
namespace {

class RefusalTest : public ServerTest { };

TEST_P(RefusalTest, AWrongPasswordFindsNothingAndHarmsNobody)
{
    const auto stranger = user("alice", "wrong");
    const Callback<std::shared_ptr<MRVAccount>> ended;
    std::make_shared<MRVAccountInfoProvider>(stranger.account, stranger.host)
        ->getAccountInfo(ended);
    ASSERT_TRUE(waitFor([&] {
        const auto exchanges = transport().exchanges();
        return !exchanges.empty() && exchanges.back().status == 401;
    }));

    const auto alice = discovered("alice");
    EXPECT_EQ(ended.count(), 0U);
    EXPECT_EQ(stranger.account->principalURL, std::nullopt);

    stranger.account->calendarHomeURL = alice.account->calendarHomeURL;
    const Listed listed;
    stranger.client->getCalendars(listed);
    ASSERT_TRUE(listed.wait());
    EXPECT_EQ(std::get<0>(listed.arguments()), std::nullopt);
    EXPECT_EQ(std::get<1>(listed.arguments()), std::nullopt) << "a refusal is no error";
}

TEST_P(RefusalTest, AnUntrustedServerIsATransportErrorThatAListingKeepsToItself)
{
    const auto alice = discovered("alice");
    const TestAuthority other;
    const auto distrustful = std::make_shared<ExchangeRecorder>(other.file());
    const UseTransport use(distrustful);

    const Listed listed;
    alice.client->getCalendars(listed);
    const auto refused = distrustful->last("PROPFIND");
    ASSERT_TRUE(refused);
    EXPECT_EQ(refused->status, std::nullopt);
    EXPECT_FALSE(refused->error.empty());
    EXPECT_EQ(listed.count(), 0U);

    const Done made;
    alice.client->create(
        calendarAt(*alice.account->calendarHomeURL + "never/", alice.account), made);
    ASSERT_TRUE(made.wait());
    const auto error = std::get<0>(made.arguments());
    ASSERT_TRUE(error);
    EXPECT_EQ(error->domain, MNetworkErrorDomain);
    EXPECT_EQ(error->code, int(MNetworkErrorCode::untrusted));
}

TEST_P(RefusalTest, AMissingEventIsAnAnswerWithoutEvents)
{
    const auto alice = discovered("alice");
    const auto work = makeCalendar(alice, "Work");
    EXPECT_EQ(fetch(alice, work, work->href + "missing.ics"), nullptr);
    const auto answer = transport().last("REPORT");
    ASSERT_TRUE(answer);
    EXPECT_EQ(answer->status, 207);
}

TESSEL_ON_SERVERS(RefusalTest, "radicale", "cyrus");

} // namespace
} // namespace Tessel::Test
