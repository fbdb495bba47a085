#include "Tessel/CaldavLibrary/Operation/Notification/MRVInvitationReplyOperation.h"
#include "tests/support/ClientSession.h"
#include "tests/support/LogRecorder.h"

#include <gtest/gtest.h>

using namespace Tessel;
using namespace Tessel::Test;

namespace {

using Done = Callback<std::optional<Error>>;
using Accepted = Callback<std::optional<std::string>, std::optional<Error>>;

MRVNotification invitation(std::optional<std::string> uid = "u<1>")
{
    return {.account = knownAccount(),
        .href = "mailto:alice@example.com",
        .hostURL = "/bob/R&D/",
        .summary = "R&D",
        .shareeEmail = "alice@example.com",
        .uid = std::move(uid)};
}

/// What the answer to an invitation is told.
struct Reply {
    std::optional<std::string> href;
    std::optional<Error> error;

    Reply(const ClientSession& session, bool accepts, MRVNotification notification = invitation())
    {
        const auto operation = std::make_shared<MRVInvitationReplyOperation>();
        operation->notification = std::make_shared<MRVNotification>(std::move(notification));
        const Accepted accepted;
        const Done declined;
        operation->acceptHandler = accepted;
        operation->declineHandler = declined;
        operation->accept = accepts;
        session.finish(operation);
        EXPECT_EQ(accepted.count(), accepts ? 1u : 0u);
        EXPECT_EQ(declined.count(), accepts ? 0u : 1u);
        if (accepts)
            std::tie(href, error) = accepted.arguments();
        else
            std::tie(error) = declined.arguments();
    }
};

std::optional<Error> acceptAnswered(const std::string& answer)
{
    return Reply(ClientSession("== reply\n> POST /home/\n" + answer + "\n"), true).error;
}

} // namespace

TEST(InvitationReply, SaysWhoAnswersWhatAndHow)
{
    const ClientSession session(loadScript("replies.script"));
    const Reply accepted(session, true);
    EXPECT_EQ(accepted.href, "/cals/shared/");
    EXPECT_FALSE(accepted.error);
    EXPECT_FALSE(Reply(session, false).error);
    EXPECT_FALSE(Reply(session, false, invitation(std::nullopt)).error);
    auto reply = invitation();
    reply.isReply = true;
    EXPECT_FALSE(Reply(session, true, reply).error);
}

TEST(InvitationReply, TellsWhatWasWrong)
{
    const LogRecorder log;
    EXPECT_EQ(acceptAnswered("@ error 4 no route")->localizedDescription, "no route");
    EXPECT_TRUE(acceptAnswered("< HTTP/1.1 200 OK\n<\n< <other/>"));
    EXPECT_TRUE(log.holds("root name differs"));
    EXPECT_TRUE(acceptAnswered("< HTTP/1.1 200 OK\n<\n< <shared-as>"));
    const auto unreadable = log.lines().back();
    EXPECT_TRUE(unreadable.starts_with("error in creating doc during Invitation Reply "));
    EXPECT_EQ(acceptAnswered("< HTTP/1.1 204 No Content")->code, 204);
    EXPECT_TRUE(log.holds("status code: 204"));

    ClientSession session("");
    session.client = std::make_shared<MRVClient>(session.account, nullptr);
    EXPECT_TRUE(Reply(session, true).error);
}

TEST(InvitationReplyDeathTest, StopsWithoutACalendarHome)
{
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_DEATH(
        {
            const ClientSession session("");
            session.account->calendarHomeURL.reset();
            const Reply reply(session, true);
        },
        "calendar home is not known");
}
