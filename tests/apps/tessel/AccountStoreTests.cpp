#include "apps/tessel/AccountStore.h"

#include "tests/support/TemporaryDirectory.h"
#include "tests/support/TestHost.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

namespace Tessel::App {
namespace {

class AccountStoreTest : public testing::Test {
protected:
    std::string file() const { return (directory_.path() / "new" / "store.sqlite").string(); }

    const std::shared_ptr<MRVAccount> account = Tessel::Test::knownAccount();

private:
    const Tessel::Test::TemporaryDirectory directory_;
};

TEST_F(AccountStoreTest, KeepsAnAccountFromOneRunToTheNext)
{
    account->calendarUserAddressSet = {"mailto:alice@example.com", "/principal/"};
    account->supportedMethod = MRVSupportedMethod::makeCal;
    AccountStore(file()).save(*account);

    AccountStore store(file());
    const auto held = store.account(account->identifier);
    ASSERT_TRUE(held);
    EXPECT_EQ(held->serverURL, account->serverURL);
    EXPECT_EQ(held->calendarHomeURL, account->calendarHomeURL);
    EXPECT_EQ(held->notificationURL, std::nullopt);
    EXPECT_EQ(held->calendarUserAddressSet, account->calendarUserAddressSet);
    EXPECT_EQ(held->supportedMethod, account->supportedMethod);
    EXPECT_EQ(store.account("nobody"), nullptr);
    const auto others
        = std::filesystem::status(file()).permissions() & std::filesystem::perms(0077);
    EXPECT_EQ(others, std::filesystem::perms::none) << "the user's alone";
}

TEST_F(AccountStoreTest, ACalendarHasItsTagOnlyOnceItsEventsAreComplete)
{
    AccountStore store(file());
    store.save(*account);
    const auto calendar = Tessel::Test::calendarAt("/home/c/", account, "tag 1");
    store.save(*calendar);
    EXPECT_EQ(store.calendars(account).at(0)->cTag, "");
    store.setSynced(*calendar);
    EXPECT_EQ(store.calendars(account).at(0)->cTag, "tag 1");
    store.save(*Tessel::Test::calendarAt("/home/c/", account, "tag 2"));
    EXPECT_EQ(store.calendars(account).at(0)->cTag, "tag 1") << "listed anew, not synced";
}

TEST_F(AccountStoreTest, EventsBelongToTheirCalendarAndGoWithIt)
{
    AccountStore store(file());
    store.save(*account);
    const auto one = Tessel::Test::calendarAt("/home/1/", account);
    const auto two = Tessel::Test::calendarAt("/home/2/", account);
    store.save(*one);
    store.save(*two);
    store.save(*one,
        {Tessel::Test::eventAt("/home/1/a.ics", "1", one),
            Tessel::Test::eventAt("/home/1/b.ics", "1", one)});
    store.save(*one, {Tessel::Test::eventAt("/home/1/a.ics", "2", one)});
    store.save(*two, {Tessel::Test::eventAt("/home/2/a.ics", "1", two)});

    ASSERT_EQ(store.events(one).size(), 2U);
    store.remove(*one, {Tessel::Test::eventAt("/home/1/b.ics", "1", one)});
    ASSERT_EQ(store.events(one).size(), 1U);
    EXPECT_EQ(store.events(one).front()->eTag, "2");
    store.remove(*one);
    EXPECT_TRUE(store.events(one).empty());
    EXPECT_EQ(store.events(two).size(), 1U);
}

TEST_F(AccountStoreTest, HoldsNotificationsByThePathOfTheirResource)
{
    AccountStore store(file());
    store.save(*account);
    const auto note = std::make_shared<MRVNotification>(MRVNotification {.account = account,
        .identifier = "/notes/1.xml",
        .href = "/notes/1.xml",
        .summary = "Team",
        .uid = "u",
        .access = MRVSharedCalendarAccess::readWrite});
    store.save({note});
    store.save({note});
    const auto held = store.notifications(account);
    ASSERT_EQ(held.size(), 1U);
    EXPECT_EQ(held[0]->href, "/notes/1.xml");
    EXPECT_EQ(held[0]->uid, "u");
    EXPECT_EQ(held[0]->organizerCN, std::nullopt);
    EXPECT_EQ(held[0]->access, MRVSharedCalendarAccess::readWrite);
    store.remove(*held[0]);
    EXPECT_TRUE(store.notifications(account).empty());
}

TEST_F(AccountStoreTest, AFileThatIsNoDatabaseIsAnError)
{
    std::filesystem::create_directories(std::filesystem::path(file()).parent_path());
    std::ofstream(file()) << "This is a letter, not a store. It is long enough to be looked at.";
    EXPECT_THROW(AccountStore {file()}, std::runtime_error);
}

} // namespace
} // namespace Tessel::App
