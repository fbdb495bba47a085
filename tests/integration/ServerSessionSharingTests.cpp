#include "Tessel/Session/Session.h"
#include "tests/integration/ServerTest.h"

using namespace Tessel;
using namespace Tessel::Test;

namespace {

class OpenSessionSharingTest : public ServerTest {
protected:
    Session::Opened open(const std::string& user) const
    {
        return wait(
            Session::open({.server = server().address(), .user = user}, Password {"secret"}))
            .value();
    }

    static std::string newCalendar(Session& session, const std::string& name)
    {
        return wait(session.createCalendar({.displayName = name})).value();
    }

    /// Shares with bob, and gives the invitation that he gets.
    Invitation invitation(Session& alice, Session& bob, const std::string& calendar,
        ShareAccess access = ShareAccess::read) const
    {
        const auto shared = wait(alice.share(calendar, {{"bob@example.com", access}}));
        EXPECT_TRUE(shared && shared.value().at(0).outcome);
        const auto invitations = wait(bob.invitations());
        EXPECT_TRUE(invitations && invitations.value().size() == 1);
        return invitations.value().at(0);
    }
};

class SessionSharingTest : public OpenSessionSharingTest { };
class NoSessionSharingTest : public OpenSessionSharingTest { };

const Sharee* only(const Result<Session::ShareeList>& sharees)
{
    EXPECT_TRUE(sharees) << (sharees ? "" : sharees.reason());
    if (!sharees || sharees.value().size() != 1) return nullptr;
    return &sharees.value().front();
}

EventText kickOff()
{
    return EventText::make(
        {.summary = "Kick-off",
            .start = EventMoment::read("20240506T120000", "Europe/Berlin").value(),
            .end = EventMoment::read("20240506T130000", "Europe/Berlin").value()})
        .value();
}

} // namespace

TEST_P(SessionSharingTest, AnAcceptedShareIsSeenByBothSides)
{
    const auto alice = open("alice");
    const auto bob = open("bob");
    const auto team = newCalendar(*alice, "Team");
    EXPECT_TRUE(wait(alice->sharees(team)).value().empty());

    const auto first = invitation(*alice, *bob, team);
    EXPECT_EQ(first.kind, Invitation::Kind::offer);
    EXPECT_EQ(first.calendar, team);
    EXPECT_EQ(first.calendarName, "Team");
    EXPECT_EQ(first.access, ShareAccess::read);
    EXPECT_TRUE(first.when);
    const auto offered = invitation(*alice, *bob, team, ShareAccess::readWrite);
    EXPECT_EQ(offered.access, ShareAccess::readWrite);
    auto listed = wait(alice->sharees(team));
    ASSERT_TRUE(only(listed));
    EXPECT_EQ(only(listed)->state, InviteState::open);

    const auto place = wait(bob->accept(offered));
    ASSERT_TRUE(place) << place.reason();
    const auto calendars = wait(bob->calendars()).value();
    const auto isShared = [&](const auto& calendar) { return calendar.href == place.value(); };
    const auto shared = std::find_if(calendars.begin(), calendars.end(), isShared);
    ASSERT_NE(shared, calendars.end());
    EXPECT_TRUE(shared->isWritable);
    const auto event = kickOff();
    const auto written = wait(bob->create(place.value(), event));
    ASSERT_TRUE(written) << written.reason();
    EXPECT_TRUE(wait(alice->fetch(team + event.uid() + ".ics")));

    listed = wait(alice->sharees(team));
    ASSERT_TRUE(only(listed));
    EXPECT_EQ(only(listed)->state, InviteState::accepted);
    EXPECT_EQ(only(listed)->access, ShareAccess::readWrite);
    const auto replies = wait(alice->invitations()).value();
    ASSERT_EQ(replies.size(), 1u);
    EXPECT_EQ(replies[0].kind, Invitation::Kind::reply);
    EXPECT_EQ(replies[0].state, InviteState::accepted);
    EXPECT_EQ(wait(alice->accept(replies[0])).failure().kind, FailureKind::malformed);
    EXPECT_TRUE(wait(alice->dismiss(replies[0])));
    EXPECT_TRUE(wait(alice->dismiss(replies[0])));
    EXPECT_TRUE(wait(alice->invitations()).value().empty());

    // What bob was lent is not his to share.
    const auto lent = wait(bob->share(place.value(), {{"alice@example.com"}}));
    ASSERT_FALSE(lent);
    EXPECT_EQ(lent.failure().kind, FailureKind::unsupported);
}

TEST_P(SessionSharingTest, SharesAreWithdrawn)
{
    const auto alice = open("alice");
    const auto bob = open("bob");
    const auto team = newCalendar(*alice, "Team");
    const auto place = wait(bob->accept(invitation(*alice, *bob, team)));
    ASSERT_TRUE(place) << place.reason();
    const auto both = wait(
        alice->share(team, {{"bob@example.com", ShareAccess::readWrite}, {"nobody@example.com"}}));
    ASSERT_TRUE(both) << both.reason();
    EXPECT_EQ(both.value().size(), 2u);
    EXPECT_EQ(wait(alice->sharees(team)).value().size(), 2u);

    const auto withdrawn
        = wait(alice->unshare(team, {"nobody@example.com", "/dav/principals/user/bob/"}));
    ASSERT_TRUE(withdrawn) << withdrawn.reason();
    EXPECT_TRUE(withdrawn.value().at(0).outcome);
    EXPECT_EQ(withdrawn.value().at(1).outcome.failure().kind, FailureKind::missing);
    EXPECT_EQ(wait(alice->sharees(team)).value().size(), 1u);
    const auto all = wait(alice->unshareAll(team));
    ASSERT_TRUE(all) << all.reason();
    ASSERT_EQ(all.value().size(), 1u);
    EXPECT_TRUE(all.value()[0].outcome) << all.value()[0].outcome.reason();
    EXPECT_TRUE(wait(alice->sharees(team)).value().empty());
    EXPECT_EQ(wait(bob->invitations()).value().at(0).kind, Invitation::Kind::withdrawal);
    EXPECT_FALSE(wait(bob->fetch(place.value())));
}

TEST_P(SessionSharingTest, ADeclinedInvitationBringsNoCalendar)
{
    const auto alice = open("alice");
    const auto bob = open("bob");
    const auto plans = newCalendar(*alice, "Plans");
    const auto before = wait(bob->calendars()).value().size();
    const auto offered = invitation(*alice, *bob, plans);
    const auto declined = wait(bob->decline(offered));
    ASSERT_TRUE(declined) << declined.reason();
    EXPECT_EQ(wait(bob->calendars()).value().size(), before);
    const auto listed = wait(alice->sharees(plans));
    ASSERT_TRUE(only(listed));
    EXPECT_EQ(only(listed)->state, InviteState::declined);

    auto bogus = offered;
    bogus.uid = "nobody-sent-this.xml";
    const auto refused = wait(bob->accept(bogus));
    ASSERT_FALSE(refused);
    EXPECT_EQ(refused.failure().kind, FailureKind::missing) << refused.reason();
}

TEST_P(NoSessionSharingTest, NothingIsSent)
{
    const auto alice = open("alice");
    const auto team = newCalendar(*alice, "Team");
    const auto before = transport().exchanges().size();
    const Invitation invitation {.place = "/alice/none.xml", .kind = Invitation::Kind::offer};
    EXPECT_EQ(wait(alice->sharees(team)).failure().kind, FailureKind::unsupported);
    EXPECT_EQ(
        wait(alice->share(team, {{"bob@example.com"}})).failure().kind, FailureKind::unsupported);
    EXPECT_EQ(
        wait(alice->unshare(team, {"bob@example.com"})).failure().kind, FailureKind::unsupported);
    EXPECT_EQ(wait(alice->unshareAll(team)).failure().kind, FailureKind::unsupported);
    EXPECT_EQ(wait(alice->invitations()).failure().kind, FailureKind::unsupported);
    EXPECT_EQ(wait(alice->accept(invitation)).failure().kind, FailureKind::unsupported);
    EXPECT_EQ(wait(alice->decline(invitation)).failure().kind, FailureKind::unsupported);
    EXPECT_EQ(transport().exchanges().size(), before);
}

TESSEL_ON_SERVERS(SessionSharingTest, "cyrus");
TESSEL_ON_SERVERS(NoSessionSharingTest, "radicale");
