#include "tests/support/ClientSession.h"

#include <gtest/gtest.h>

using namespace Tessel;
using namespace Tessel::Test;

namespace {

using Done = Callback<std::optional<Error>>;

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

} // namespace

TEST(Sharing, DoesForEachShareeWhatItsStatusSays)
{
    using enum MRVInviteStatus;
    const auto writes = MRVSharedCalendarAccess::readWrite;
    const ClientSession session(loadScript("share.script"));
    const Done done;
    const auto work = calendarNamed("Work", session.account);
    session.client->share(work,
        {sharee("new@x", noResponse), sharee("in@x", accepted), sharee("out@x", declined),
            sharee("gone@x", deleted, writes), sharee("a+b@x", noResponse, writes)},
        done);
    ASSERT_TRUE(done.wait(1));
    session.client->share(work, {sharee("in@x", accepted)}, done);
    ASSERT_TRUE(done.wait(2));
    session.client->share(calendarNamed("<R&D> \"\xC3\xA4\"\x01\xFF]]>", session.account),
        {sharee("o'<neil>&@x", noResponse)}, done);
    ASSERT_TRUE(done.wait(3));

    const Done never;
    session.client->unshare(work, {}, never); // its sharees are not known
    work->sharees = {{sharee("mailto:a@x", accepted), sharee("b@x", noResponse)}};
    session.client->unshare(work, {work->sharees->front()}, done); // whoever is named
    ASSERT_TRUE(done.wait(4));
    work->sharees->clear();
    session.client->unshare(work, {}, done);
    ASSERT_TRUE(done.wait(5));
    EXPECT_EQ(never.count(), 0u);
}
