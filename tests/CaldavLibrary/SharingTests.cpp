#include "CaldavLibrary/Operation/Notification/MRVInvitationReplyOperation.h"
#include "support/ClientSession.h"
#include "support/LogRecorder.h"

#include <gtest/gtest.h>

using namespace Tessel;
using namespace Tessel::Test;

namespace {

using Done = Callback<std::optional<Error>>;
using Accepted = Callback<std::optional<std::string>, std::optional<Error>>;

constexpr auto declarations
    = " xmlns:cs=\"http://calendarserver.org/ns/\" xmlns:d=\"DAV:\" "
      "xmlns:ical=\"http://apple.com/ns/ical/\" xmlns:c=\"urn:ietf:params:xml:ns:caldav\"";

std::string document(const std::string& root, const std::string& content)
{
    const auto start = "<?xml version=\"1.0\" encoding=\"utf-8\" ?><cs:" + root + declarations;
    if (content.empty()) return start + "/>";
    return start + ">" + content + "</cs:" + root + ">";
}

std::shared_ptr<MRVSharee> sharee(std::string email, MRVInviteStatus status,
    MRVSharedCalendarAccess access = MRVSharedCalendarAccess::readOnly)
{
    return std::make_shared<MRVSharee>(
        MRVSharee {.email = std::move(email), .access = access, .status = status});
}

std::shared_ptr<MRVCalendar> calendarNamed(std::string name, std::shared_ptr<MRVAccount> account)
{
    return std::make_shared<MRVCalendar>(MRVCalendar {
        .calID = "",
        .href = "/cal/",
        .displayName = std::move(name),
        .cTag = "",
        .syncToken = "",
        .owner = "",
        .account = std::move(account),
    });
}

/// The body of the one request that a call of the client makes.
template <class Call> std::string bodyOf(Call call)
{
    const ClientSession session("== share\n> POST /cal/\n< HTTP/1.1 200 OK\n");
    const Done done;
    call(session, done);
    EXPECT_TRUE(done.wait());
    EXPECT_EQ(
        session.transport->requests()[0].headers.value("Content-Type"), "text/xml charset=utf-8");
    return std::string(session.transport->requests()[0].body.view());
}

MRVNotification invitation(std::optional<std::string> uid = "u<1>")
{
    return {
        .account = knownAccount(),
        .href = "mailto:alice@example.com",
        .hostURL = "/bob/R&D/",
        .summary = "R&D",
        .shareeEmail = "alice@example.com",
        .uid = std::move(uid),
    };
}

std::string replyAnswered(const std::string& answer)
{
    return "== reply\n> POST /home/\n> Authorization: Basic dTpw\n> !Depth\n" + answer + "\n";
}

struct Reply {
    Accepted accepted;
    Done declined;

    Reply(const ClientSession& session, bool accept, MRVNotification notification = invitation())
    {
        const auto operation = std::make_shared<MRVInvitationReplyOperation>();
        operation->notification = std::make_shared<MRVNotification>(std::move(notification));
        operation->acceptHandler = accepted;
        operation->declineHandler = declined;
        operation->accept = accept;
        session.finish(operation);
        EXPECT_EQ(accepted.count(), accept ? 1u : 0u);
        EXPECT_EQ(declined.count(), accept ? 0u : 1u);
    }
    std::optional<std::string> href() const { return std::get<0>(accepted.arguments()); }
    std::optional<Error> error() const
    {
        return accepted.count() ? std::get<1>(accepted.arguments())
                                : std::get<0>(declined.arguments());
    }
};

Reply acceptAnswered(const std::string& answer)
{
    return {ClientSession(replyAnswered(answer)), true};
}

std::string replyBody(bool accept, MRVNotification notification)
{
    const ClientSession session(replyAnswered(
        "< HTTP/1.1 200 OK\n<\n< <cs:shared-as xmlns:cs=\"http://calendarserver.org/ns/\"/>"));
    const Reply reply(session, accept, std::move(notification));
    EXPECT_FALSE(reply.error());
    return std::string(session.transport->requests()[0].body.view());
}

} // namespace

TEST(Share, DoesForEachShareeWhatItsStatusSays)
{
    using enum MRVInviteStatus;
    const auto body = bodyOf([](const ClientSession& session, const Done& done) {
        session.client->share(calendarNamed("Work", session.account),
            {sharee("new@x", noResponse), sharee("in@x", accepted), sharee("out@x", declined),
                sharee("gone@x", deleted, MRVSharedCalendarAccess::readWrite),
                sharee("a+b@x", noResponse, MRVSharedCalendarAccess::readWrite)},
            done);
    });
    EXPECT_EQ(body,
        document("share",
            "<cs:set><d:href>mailto:new@x</d:href><cs:summary>Work</cs:summary><cs:read/></cs:set>"
            "<cs:remove><d:href>mailto:gone@x</d:href></cs:remove>"
            "<cs:set><d:href>mailto:a+b@x</d:href><cs:summary>Work</cs:summary><cs:read-write/>"
            "</cs:set>"));
}

TEST(Share, SendsARootWithoutChildrenWhenNothingIsLeftToDo)
{
    const auto body = bodyOf([](const ClientSession& session, const Done& done) {
        session.client->share(calendarNamed("Work", session.account),
            {sharee("in@x", MRVInviteStatus::accepted)}, done);
    });
    EXPECT_EQ(body, document("share", ""));
}

TEST(Share, StaysWellFormedWhateverTheNamesHold)
{
    const auto body = bodyOf([](const ClientSession& session, const Done& done) {
        session.client->share(calendarNamed("<R&D> \"\xC3\xA4\"\x01\xFF]]>", session.account),
            {sharee("o'<neil>&@x", MRVInviteStatus::noResponse)}, done);
    });
    EXPECT_EQ(body,
        document("share",
            "<cs:set><d:href>mailto:o'&lt;neil&gt;&amp;@x</d:href>"
            "<cs:summary>&lt;R&amp;D&gt; \"\xC3\xA4\"]]&gt;</cs:summary><cs:read/></cs:set>"));
}

TEST(Unshare, RemovesEveryShareeWhoeverIsNamed)
{
    const auto body = bodyOf([](const ClientSession& session, const Done& done) {
        const auto calendar = calendarNamed("Work", session.account);
        calendar->sharees = {{sharee("mailto:a@x", MRVInviteStatus::accepted),
            sharee("b@x", MRVInviteStatus::noResponse)}};
        session.client->unshare(calendar, {calendar->sharees->front()}, done);
    });
    EXPECT_EQ(body,
        document("share",
            "<cs:remove><d:href>mailto:a@x</d:href></cs:remove>"
            "<cs:remove><d:href>mailto:b@x</d:href></cs:remove>"));
}

TEST(Unshare, SendsAnEmptyListButNotAnAbsentOne)
{
    const auto body = bodyOf([](const ClientSession& session, const Done& done) {
        const auto calendar = calendarNamed("Work", session.account);
        const Done never;
        session.client->unshare(calendar, {}, never);
        calendar->sharees.emplace();
        session.client->unshare(calendar, {}, done);
        EXPECT_EQ(never.count(), 0u);
    });
    EXPECT_EQ(body, document("share", ""));
}

TEST(InvitationReply, SaysWhoAnswersWhatAndHow)
{
    const std::string head = "<cs:in-reply-to>u&lt;1&gt;</cs:in-reply-to>"
                             "<d:href>mailto:alice@example.com</d:href>";
    const std::string host = "<cs:hosturl><d:href>/bob/R&amp;D/</d:href></cs:hosturl>";
    EXPECT_EQ(replyBody(true, invitation()),
        document("invite-reply", head + "<cs:invite-accepted/>" + host));
    EXPECT_EQ(replyBody(false, invitation()),
        document("invite-reply", head + "<cs:invite-declined/>" + host));
    EXPECT_NE(replyBody(false, invitation(std::nullopt)).find("<cs:in-reply-to/><d:href>"),
        std::string::npos);
    auto reply = invitation();
    reply.isReply = true;
    EXPECT_EQ(replyBody(true, reply), document("invite-reply", ""));
}

TEST(InvitationReply, HandsOutTheNewPlaceOfTheCalendar)
{
    ClientSession session(
        replyAnswered("< HTTP/1.1 200 OK\n<\n< <x:shared-as "
                      "xmlns:x=\"http://calendarserver.org/ns/\" xmlns:D=\"DAV:\">"
                      "<D:href>/cals/shared/</D:href></x:shared-as>"));
    const Accepted accepted;
    session.client->acceptInvitation(std::make_shared<MRVNotification>(invitation()), accepted);
    ASSERT_TRUE(accepted.wait());
    EXPECT_EQ(std::get<0>(accepted.arguments()), "/cals/shared/");
    EXPECT_FALSE(std::get<1>(accepted.arguments()));
}

TEST(InvitationReply, TellsWhatWasWrong)
{
    const LogRecorder log;
    EXPECT_EQ(acceptAnswered("@ error 4 no route").error()->localizedDescription, "no route");
    EXPECT_TRUE(acceptAnswered("< HTTP/1.1 200 OK\n<\n< <other/>").error());
    EXPECT_TRUE(log.holds("root name differs"));
    EXPECT_TRUE(acceptAnswered("< HTTP/1.1 200 OK\n<\n< <shared-as>").error());
    const auto unreadable = log.lines().back();
    EXPECT_TRUE(unreadable.starts_with("error in creating doc during Invitation Reply "));
    EXPECT_EQ(acceptAnswered("< HTTP/1.1 204 No Content").error()->code, 204);
    EXPECT_TRUE(log.holds("status code: 204"));

    ClientSession session("");
    session.client = std::make_shared<MRVClient>(session.account, nullptr);
    EXPECT_TRUE(Reply(session, true).error());
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
