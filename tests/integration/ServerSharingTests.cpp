#include "tests/integration/ServerTest.h"
#include "tests/integration/TestEvents.h"

#include <algorithm>
#include <stdexcept>

namespace Tessel::Test {
namespace {

class SharingTest : public ServerTest {
protected:
    static constexpr const char* bobsAddress = "bob@example.com";
    static constexpr MRVCalendarPrivileges writeContent {128};

    /// Shares with bob and waits for the server's answer.
    void share(const User& owner, const Calendar& calendar, MRVSharedCalendarAccess access,
        const Done& shared = {}) const
    {
        const auto before = posts();
        owner.client->share(calendar,
            {std::make_shared<MRVSharee>(MRVSharee {.email = bobsAddress, .access = access})},
            shared);
        expectSharingAnswer(before, shared);
    }

    /// The invitation that bob gets when alice shares a new calendar read-only.
    Notifications::value_type invitation(
        const User& alice, const User& bob, const std::string& name) const
    {
        share(alice, makeCalendar(alice, name), MRVSharedCalendarAccess::readOnly);
        const auto invitations = notifications(bob);
        EXPECT_EQ(invitations.size(), 1U);
        if (invitations.size() != 1) throw std::runtime_error("there is not one invitation");
        return invitations.front();
    }

    void unshare(const User& owner, const Calendar& calendar) const
    {
        const auto before = posts();
        const Done unshared;
        owner.client->unshare(calendar, {}, unshared);
        expectSharingAnswer(before, unshared);
    }

    /// The host holds the notifications from now on, as copies whose `href` is the path.
    static void hold(const User& user, const Notifications& notes)
    {
        for (const auto& note : notes) {
            user.host->heldNotifications.push_back(std::make_shared<MRVNotification>(*note));
            user.host->heldNotifications.back()->href = note->identifier.value();
        }
    }

    std::shared_ptr<MRVSharee> shareeOf(const User& owner, const std::string& calendar) const
    {
        const auto sharees = find(owner, calendar)->sharees;
        EXPECT_TRUE(sharees && sharees->size() == 1);
        if (!sharees || sharees->size() != 1) throw std::runtime_error("there is not one sharee");
        return sharees->front();
    }

private:
    std::size_t posts() const
    {
        const auto all = transport().exchanges();
        return std::size_t(std::count_if(all.begin(), all.end(),
            [](const Exchange& exchange) { return exchange.method == "POST"; }));
    }
    /// A share is made with 200 or 204; only 200 is told to the host.
    void expectSharingAnswer(std::size_t before, const Done& told) const
    {
        const auto answer = transport().last("POST", before + 1);
        ASSERT_TRUE(answer && (answer->status == 200 || answer->status == 204));
        EXPECT_EQ(told.count(), answer->status == 200 ? 1U : 0U);
    }
};

TEST_P(SharingTest, AnAcceptedShareIsSeenByBothSides)
{
    const auto alice = discovered("alice");
    const auto bob = discovered("bob");
    const auto team = makeCalendar(alice, "Team");

    share(alice, team, MRVSharedCalendarAccess::readOnly);
    const auto readOnly = notifications(bob);
    ASSERT_EQ(readOnly.size(), 1U);
    EXPECT_FALSE(readOnly[0]->isReply);
    EXPECT_EQ(readOnly[0]->summary, "Team");
    EXPECT_EQ(readOnly[0]->hostURL, team->href);
    EXPECT_EQ(readOnly[0]->access, MRVSharedCalendarAccess::readOnly);
    EXPECT_EQ(readOnly[0]->status, MRVInviteStatus::noResponse);
    ASSERT_TRUE(readOnly[0]->uid);
    hold(bob, readOnly);

    // The new invitation takes the place of the first, under the same path.
    share(alice, team, MRVSharedCalendarAccess::readWrite);
    EXPECT_TRUE(notifications(bob).empty()) << "a held path is not fetched again";
    bob.host->heldNotifications.clear();
    const auto invitations = notifications(bob);
    ASSERT_EQ(invitations.size(), 1U);
    EXPECT_EQ(invitations[0]->identifier, readOnly[0]->identifier);
    EXPECT_EQ(invitations[0]->access, MRVSharedCalendarAccess::readWrite);
    EXPECT_EQ(shareeOf(alice, "Team")->status, MRVInviteStatus::noResponse);

    const Callback<std::optional<std::string>, std::optional<Error>> accepted;
    bob.client->acceptInvitation(invitations[0], accepted);
    ASSERT_TRUE(accepted.wait());
    ASSERT_EQ(std::get<1>(accepted.arguments()), std::nullopt);
    const auto shared = find(bob, "Team");
    EXPECT_EQ(shared->href, std::get<0>(accepted.arguments()));
    EXPECT_TRUE(shared->href.starts_with(*bob.account->calendarHomeURL));
    EXPECT_TRUE(shared->isShared);
    EXPECT_TRUE(shared->privileges && shared->privileges->contains(writeContent));
    const Callback<std::optional<std::string>, std::optional<Error>> created;
    bob.client->create(newEvent(shared, "Kick-off"), created);
    ASSERT_TRUE(created.wait());
    const auto uid = std::get<0>(created.arguments()).value_or("");
    const auto seen = fetch(alice, team, team->href + uid + ".ics");
    ASSERT_TRUE(seen) << "what bob writes is in alice's calendar";
    EXPECT_EQ(seen->summary, "Kick-off");

    const auto sharee = shareeOf(alice, "Team");
    EXPECT_EQ(sharee->status, MRVInviteStatus::accepted);
    EXPECT_EQ(sharee->access, MRVSharedCalendarAccess::readWrite);
    EXPECT_TRUE(find(alice, "Team")->isShared);
    const auto replies = notifications(alice);
    ASSERT_EQ(replies.size(), 1U);
    EXPECT_TRUE(replies[0]->isReply);
    EXPECT_EQ(replies[0]->status, MRVInviteStatus::accepted);
    EXPECT_EQ(replies[0]->hostURL, team->href);
}

TEST_P(SharingTest, AWithdrawnShareTakesTheCalendarAway)
{
    const auto alice = discovered("alice");
    const auto bob = discovered("bob");
    const Callback<std::optional<std::string>, std::optional<Error>> accepted;
    bob.client->acceptInvitation(invitation(alice, bob, "Team"), accepted);
    ASSERT_TRUE(accepted.wait());
    const auto shared = list(bob);
    ASSERT_EQ(shared.size(), 1U);
    EXPECT_TRUE(shared[0]->privileges && !shared[0]->privileges->contains(writeContent));

    unshare(alice, find(alice, "Team"));
    EXPECT_TRUE(list(bob).empty());
    const auto sharees = find(alice, "Team")->sharees;
    EXPECT_TRUE(!sharees || sharees->empty());
    EXPECT_FALSE(find(alice, "Team")->isShared);
}

TEST_P(SharingTest, ADeclinedInvitationBringsNoCalendar)
{
    const auto alice = discovered("alice");
    const auto bob = discovered("bob");
    const Done declined;
    bob.client->declineInvitation(invitation(alice, bob, "Plans"), declined);
    ASSERT_TRUE(declined.wait());
    EXPECT_EQ(std::get<0>(declined.arguments()), std::nullopt);
    EXPECT_TRUE(list(bob).empty());
    EXPECT_EQ(shareeOf(alice, "Plans")->status, MRVInviteStatus::declined);
    const auto replies = notifications(alice);
    ASSERT_EQ(replies.size(), 1U);
    EXPECT_EQ(replies[0]->status, MRVInviteStatus::declined);
}

TEST_P(SharingTest, ANotificationThatDisappearsIsReportedRemoved)
{
    const auto alice = discovered("alice");
    const auto bob = discovered("bob");
    share(alice, makeCalendar(alice, "Team"), MRVSharedCalendarAccess::readOnly);
    share(alice, makeCalendar(alice, "Plans"), MRVSharedCalendarAccess::readOnly);
    const auto invitations = notifications(bob);
    ASSERT_EQ(invitations.size(), 2U);
    hold(bob, invitations);

    const auto path = bob.host->heldNotifications.front()->href;
    const Done deleted;
    bob.client->deleteNotification(bob.host->heldNotifications.front(), deleted);
    ASSERT_TRUE(deleted.wait());
    EXPECT_TRUE(notifications(bob).empty());
    EXPECT_EQ(bob.host->lines(), (std::vector<std::string> {"notificationsRemoved " + path}));
}

TESSEL_ON_SERVERS(SharingTest, "cyrus");

} // namespace
} // namespace Tessel::Test
