#include "apps/tessel/RecordingTransport.h"

#include "tests/support/ScriptedTransport.h"

#include <gtest/gtest.h>

namespace Tessel::App {
namespace {

using Completion = Test::Callback<Data, std::shared_ptr<const URLResponse>,
    std::optional<std::string>, std::optional<Error>, int>;

class RecordingTransportTest : public testing::Test {
protected:
    /// Sends one request that is answered with that status.
    Completion send(
        const std::string& method, const std::string& status, const std::string& body = "")
    {
        const auto network
            = std::make_shared<Tessel::Test::ScriptedTransport>(Tessel::Test::Script::parse(
                "== one\n> " + method + " /c/\n< HTTP/1.1 " + status + "\n<\n< " + body + "\n"));
        RecordingTransport transport(network, log);
        URLRequest request("https://server.example/c/");
        request.method = method;
        Completion answered;
        transport.send({.request = request, .completionHandler = answered});
        EXPECT_TRUE(network->waitUntilPlayed());
        return answered;
    }

    const std::shared_ptr<ExchangeLog> log = std::make_shared<ExchangeLog>();
};

TEST_F(RecordingTransportTest, NotesWhatTheServerSaid)
{
    const auto answered = send("PROPFIND", "207 Multi-Status", "<multistatus/>");
    ASSERT_EQ(answered.count(), 1U);
    EXPECT_EQ(std::get<0>(answered.arguments()).view(), "<multistatus/>");
    const auto last = log->last();
    ASSERT_TRUE(last);
    EXPECT_EQ(last->description(), "PROPFIND https://server.example/c/: 207");
    EXPECT_TRUE(last->isOver);
    EXPECT_TRUE(last->isWithout("response"));
    send("REPORT", "207 Multi-Status", "<multistatus>" + std::string(5000, ' ') + "</multistatus>");
    EXPECT_FALSE(log->last()->isWithout("response")) << "a long answer is not kept";
}

TEST_F(RecordingTransportTest, ARefusedWriteIsAnError)
{
    const auto error = [](const Completion& answered) { return std::get<3>(answered.arguments()); };
    const auto refused = error(send("PUT", "412 Precondition Failed"));
    ASSERT_TRUE(refused);
    EXPECT_EQ(refused->code, 412);
    EXPECT_EQ(log->last()->status, 412);
    EXPECT_TRUE(error(send("MOVE", "500 Oh")));
    EXPECT_FALSE(error(send("PUT", "403 Forbidden"))) << "the library has a word for it";
    EXPECT_FALSE(error(send("PROPFIND", "500 Oh"))) << "reading takes any status";
}

TEST_F(RecordingTransportTest, WaitingEndsWithSilence)
{
    const auto never = [](const ExchangeLog::Exchanges&) { return false; };
    const auto soon = ExchangeLog::Clock::now() + std::chrono::milliseconds(50);
    EXPECT_EQ(log->wait(never, soon, 0), ExchangeLog::Outcome::timedOut) << "nothing was sent yet";
    send("PROPFIND", "401 Unauthorized");
    const auto late = ExchangeLog::Clock::now() + Tessel::Test::patience;
    EXPECT_EQ(log->wait(never, late, 0), ExchangeLog::Outcome::silent);
    EXPECT_EQ(log->wait([](const auto& all) { return all.size() == 1; }, late, 0),
        ExchangeLog::Outcome::met);
}

TEST_F(RecordingTransportTest, AnExchangeThatIsDroppedIsOver)
{
    struct Dropping final : MNetworkManager {
        int send(MTask) override { return 0; }
    };
    RecordingTransport(std::make_shared<Dropping>(), log)
        .send(
            {.request = URLRequest("https://server.example/"), .completionHandler = Completion()});
    EXPECT_TRUE(log->exchanges().at(0).isOver) << "as when a redirect is taken over";
    EXPECT_FALSE(log->last()) << "but the server has said nothing";
}

} // namespace
} // namespace Tessel::App
