#include "integration/ServerTest.h"

namespace Tessel::Test {
namespace {

using Notification = std::shared_ptr<MRVNotification>;
using Notifications = std::vector<Notification>;

class CyrusSharingTest : public ServerTest {
protected:
    CyrusSharingTest()
        : ServerTest("cyrus")
    {
    }

    /// Shares and waits until the server lists the access.
    void share(const User& owner, const Calendar& calendar, const std::string& email,
        MRVSharedCalendarAccess access) const
    {
        owner.client->share(calendar,
            {std::make_shared<MRVSharee>(MRVSharee {.email = email, .access = access})},
            [](const auto&) {});
        ASSERT_TRUE(waitFor([&] {
            const auto sharees = find(owner, calendar->displayName)->sharees;
            return sharees && !sharees->empty() && sharees->front()->access == access;
        }));
    }

    /// The notifications that the host does not hold yet; it holds them from now on.
    Notifications fetchNew(const User& user) const
    {
        const Callback<std::optional<Notifications>, std::optional<Error>> fetched;
        user.client->getNotifications(fetched);
        if (!fetched.wait()) throw std::runtime_error("no answer for the notifications");
        EXPECT_EQ(std::get<1>(fetched.arguments()), std::nullopt);
        const auto notes = std::get<0>(fetched.arguments()).value_or(Notifications {});
        for (const auto& note : notes) {
            user.host->heldNotifications.push_back(std::make_shared<MRVNotification>(*note));
            user.host->heldNotifications.back()->href = note->identifier.value();
        }
        return notes;
    }

    static MRVInviteStatus statusOf(const Calendar& calendar)
    {
        return calendar->sharees.value().front()->status;
    }
};

TEST_F(CyrusSharingTest, DiscoversTheCollectionsOfSchedulingAndSharing)
{
    const auto alice = discovered("alice");
    EXPECT_EQ(alice.account->calendarHomeURL, "/dav/calendars/user/alice/");
    EXPECT_EQ(alice.account->scheduleInboxURL, "/dav/calendars/user/alice/Inbox/");
    EXPECT_EQ(alice.account->scheduleOutboxURL, "/dav/calendars/user/alice/Outbox/");
    EXPECT_EQ(alice.account->notificationURL, "/dav/notifications/user/alice/");
}

TEST_F(CyrusSharingTest, ACalendarIsSharedAcceptedAndTakenBack)
{
    const auto alice = discovered("alice");
    const auto bob = discovered("bob");
    const auto team = makeCalendar(alice, "Team");

    share(alice, team, "bob@example.com", MRVSharedCalendarAccess::readOnly);
    auto notes = fetchNew(bob);
    ASSERT_EQ(notes.size(), 1U);
    EXPECT_FALSE(notes[0]->isReply);
    EXPECT_EQ(notes[0]->summary, "Team");
    EXPECT_EQ(notes[0]->hostURL, team->href);
    EXPECT_EQ(notes[0]->access, MRVSharedCalendarAccess::readOnly);
    ASSERT_TRUE(notes[0]->uid);
    EXPECT_TRUE(fetchNew(bob).empty()) << "held notifications are not fetched again";

    // A second invitation takes the place of the first, under the same path.
    share(alice, team, "bob@example.com", MRVSharedCalendarAccess::readWrite);
    bob.host->heldNotifications.clear();
    notes = fetchNew(bob);
    ASSERT_EQ(notes.size(), 1U);
    EXPECT_EQ(notes[0]->access, MRVSharedCalendarAccess::readWrite);

    const Callback<std::optional<std::string>, std::optional<Error>> accepted;
    bob.client->acceptInvitation(notes[0], accepted);
    ASSERT_TRUE(accepted.wait());
    const auto [href, error] = accepted.arguments();
    ASSERT_EQ(error, std::nullopt);
    const auto shared = find(bob, "Team");
    EXPECT_EQ(shared->href, href);
    EXPECT_TRUE(shared->isShared);

    EXPECT_EQ(statusOf(find(alice, "Team")), MRVInviteStatus::accepted);
    EXPECT_TRUE(find(alice, "Team")->isShared);
    notes = fetchNew(alice);
    ASSERT_EQ(notes.size(), 1U);
    EXPECT_TRUE(notes[0]->isReply);
    EXPECT_EQ(notes[0]->status, MRVInviteStatus::accepted);
    EXPECT_EQ(notes[0]->hostURL, team->href);

    alice.client->unshare(find(alice, "Team"), {}, [](const auto&) {});
    EXPECT_TRUE(waitFor([&] { return list(bob).empty(); }));
}

TEST_F(CyrusSharingTest, ADeclinedInvitationAndANotificationThatDisappears)
{
    const auto alice = discovered("alice");
    const auto bob = discovered("bob");
    const auto plans = makeCalendar(alice, "Plans");
    const auto team = makeCalendar(alice, "Team");
    share(alice, plans, "bob@example.com", MRVSharedCalendarAccess::readOnly);
    share(alice, team, "bob@example.com", MRVSharedCalendarAccess::readOnly);
    const auto notes = fetchNew(bob);
    ASSERT_EQ(notes.size(), 2U);
    const auto& invitation = notes[0]->summary == "Plans" ? notes[0] : notes[1];

    const Callback<std::optional<Error>> declined;
    bob.client->declineInvitation(invitation, declined);
    ASSERT_TRUE(declined.wait());
    EXPECT_EQ(std::get<0>(declined.arguments()), std::nullopt);
    EXPECT_EQ(statusOf(find(alice, "Plans")), MRVInviteStatus::declined);
    const auto replies = fetchNew(alice);
    ASSERT_EQ(replies.size(), 1U);
    EXPECT_EQ(replies[0]->status, MRVInviteStatus::declined);
    EXPECT_TRUE(list(bob).empty());

    const auto path = invitation->identifier.value();
    const Callback<std::optional<Error>> deleted;
    for (const auto& held : bob.host->heldNotifications) {
        if (held->href == path) bob.client->deleteNotification(held, deleted);
    }
    ASSERT_TRUE(deleted.wait());
    EXPECT_TRUE(fetchNew(bob).empty());
    EXPECT_TRUE(bob.host->hears("notificationsRemoved " + path));
}

} // namespace
} // namespace Tessel::Test
