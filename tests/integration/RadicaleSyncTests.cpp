#include "integration/ServerTest.h"

namespace Tessel::Test {
namespace {

class RadicaleSyncTest : public ServerTest {
protected:
    RadicaleSyncTest()
        : ServerTest("radicale")
    {
    }

    void put(const User& user, const Calendar& calendar, const std::string& uid,
        const std::string& summary) const
    {
        EXPECT_EQ(http(user, "PUT", calendar->href + uid + ".ics", text(uid, summary)).status, 201);
    }
    /// What a host keeps after a sync.
    void hold(const User& user, const Calendar& calendar, Events events) const
    {
        user.host->heldCalendars = {calendar};
        user.host->heldEvents = std::move(events);
    }
};

TEST_F(RadicaleSyncTest, DiscoversAnAccountFromHostNameAndPort)
{
    const auto alice = discovered("alice");
    EXPECT_EQ(alice.account->serverURL, "https://localhost:" + server().port());
    EXPECT_EQ(alice.account->principalURL, "/alice/");
    EXPECT_EQ(alice.account->calendarHomeURL, "/alice/");
    EXPECT_EQ(alice.account->calendarUserAddressSet, (std::vector<std::string> {"/alice/"}));
    EXPECT_EQ(alice.account->notificationURL, std::nullopt);
    EXPECT_EQ(alice.account->supportedMethod,
        (MRVSupportedMethod {MRVSupportedMethod::makeCal, MRVSupportedMethod::deleteCal,
            MRVSupportedMethod::propertyPatch}));
}

TEST_F(RadicaleSyncTest, CreatesACalendarWithItsPropertiesAndChangesThem)
{
    const auto alice = discovered("alice");
    const Callback<std::optional<Error>> made;
    alice.client->create(
        std::make_shared<MRVCalendar>(MRVCalendar {
            .href = "/alice/work/",
            .displayName = "Büro & <mehr>",
            .desc = "\"all\" that's work",
            .order = "3",
            .color = "#2E7D32FF",
            .timeZone = TimeZone::withIdentifier("Europe/Berlin").value(),
            .account = alice.account,
            .supportedComponents
            = MRVCalendarComponents {MRVCalendarComponents::event, MRVCalendarComponents::todo},
        }),
        made);
    ASSERT_TRUE(made.wait());
    ASSERT_EQ(std::get<0>(made.arguments()), std::nullopt);

    const auto listed = list(alice);
    ASSERT_EQ(listed.size(), 1U);
    const auto& calendar = *listed.front();
    EXPECT_EQ(calendar.href, "/alice/work/");
    EXPECT_EQ(calendar.calID, "alice/alice/work/");
    EXPECT_EQ(calendar.displayName, "Büro & <mehr>");
    EXPECT_EQ(calendar.desc, "\"all\" that's work");
    EXPECT_EQ(calendar.order, "3");
    EXPECT_EQ(calendar.color, "#2E7D32FF");
    EXPECT_EQ(calendar.timeZone.identifier(), "Europe/Berlin");
    ASSERT_TRUE(calendar.supportedComponents);
    EXPECT_EQ(calendar.supportedComponents->rawValue(), 7);

    const Callback<std::optional<MRVClient::PropertyResults>> changed;
    alice.client->update(listed.front(),
        {{MRVCalendar::propertyColor, "#C62828FF"}, {MRVCalendar::propertyOrder, "<1>"}}, changed);
    ASSERT_TRUE(changed.wait());
    EXPECT_EQ(std::get<0>(changed.arguments()),
        (MRVClient::PropertyResults {{MRVCalendar::propertyColor, MRVStatusCode::OK},
            {MRVCalendar::propertyOrder, MRVStatusCode::OK}}));
    EXPECT_EQ(list(alice).front()->color, "#C62828FF");
    EXPECT_EQ(list(alice).front()->order, "<1>");

    const Callback<std::optional<Error>> again;
    alice.client->create(listed.front(), again);
    ASSERT_TRUE(again.wait());
    EXPECT_TRUE(std::get<0>(again.arguments())) << "the collection exists";
}

TEST_F(RadicaleSyncTest, SecondSyncTellsExactlyWhatChangedBehindItsBack)
{
    const auto alice = discovered("alice");
    const auto before = makeCalendar(alice, "Work");
    for (const auto uid : {"edited", "removed", "same"})
        put(alice, before, uid, "First");
    alice.client->sync();
    ASSERT_TRUE(alice.host->hears("eventsSyncFinished " + before->href));
    const auto held = alice.host->lastEvents();
    ASSERT_EQ(held.size(), 3U);
    EXPECT_EQ(held.front()->summary, "First");
    hold(alice, find(alice, "Work"), held);

    put(alice, before, "edited", "Second");
    put(alice, before, "added", "New");
    EXPECT_EQ(http(alice, "DELETE", before->href + "removed.ics").status, 200);
    const auto heard = alice.host->lines().size();
    alice.client->sync();
    ASSERT_TRUE(waitFor([&] {
        const auto lines = alice.host->lines();
        return lines.back() == "eventsSyncFinished " + before->href && lines.size() > heard;
    }));

    auto lines = alice.host->lines();
    lines.erase(lines.begin(), lines.begin() + std::ptrdiff_t(heard));
    ASSERT_EQ(lines.size(), 6U);
    EXPECT_EQ(lines[0], "calendarsEdited " + before->href);
    EXPECT_EQ(lines[1], "calendarSyncFinished");
    const bool namesSame = lines[2].find("same") != std::string::npos;
    const bool namesEdited = lines[2].find("edited") != std::string::npos;
    EXPECT_TRUE(lines[2].starts_with("eventsDeleted ") && namesSame && namesEdited) << lines[2];
    EXPECT_EQ(lines[2].find("removed"), std::string::npos) << "it carries what is still there";
    std::sort(lines.begin() + 3, lines.begin() + 5); // both fetches run side by side
    EXPECT_EQ(lines[3], "eventsAdded " + before->href + ": added");
    EXPECT_EQ(lines[4], "eventsEdited " + before->href + ": edited");
}

TEST_F(RadicaleSyncTest, SyncsALargeCalendarInOneSweep)
{
    constexpr int count = 500;
    const auto alice = discovered("alice");
    const auto calendar = makeCalendar(alice, "Large");
    for (int i = 0; i < count; ++i) {
        const auto uid = "uid-" + std::to_string(i);
        put(alice, calendar, uid, "Event " + std::to_string(i));
    }
    alice.client->sync();
    ASSERT_TRUE(alice.host->hears("eventsSyncFinished " + calendar->href));
    EXPECT_EQ(alice.host->lastEvents().size(), std::size_t(count));

    hold(alice, find(alice, "Large"), alice.host->lastEvents());
    const auto heard = alice.host->lines().size();
    alice.client->sync();
    ASSERT_TRUE(waitFor([&] { return alice.host->lines().size() > heard; }));
    EXPECT_EQ(alice.host->lines().back(), "calendarSyncFinished") << "nothing has changed";
}

TEST_F(RadicaleSyncTest, AWrongPasswordFindsNothingAndHarmsNobody)
{
    const auto stranger = user("alice", "wrong");
    const Callback<std::shared_ptr<MRVAccount>> ended;
    std::make_shared<MRVAccountInfoProvider>(stranger.account, stranger.host)
        ->getAccountInfo(ended);

    const auto alice = discovered("alice");
    stranger.account->calendarHomeURL = "/alice/";
    const Callback<std::optional<Calendars>, std::optional<Error>> listed;
    stranger.client->getCalendars(listed);
    ASSERT_TRUE(listed.wait());
    EXPECT_EQ(std::get<0>(listed.arguments()), std::nullopt);
    EXPECT_EQ(std::get<1>(listed.arguments()), std::nullopt) << "a refusal is no error";
    EXPECT_EQ(ended.count(), 0U);
    EXPECT_EQ(stranger.account->principalURL, std::nullopt);
}

TEST_F(RadicaleSyncTest, AnUntrustedServerIsATransportError)
{
    const auto alice = discovered("alice");
    const TestAuthority other;
    MNetworkManager::setSharedInstance(std::make_shared<MCurlNetworkManager>(
        MNetworkConfiguration {.authorityFile = other.file()}));
    const Callback<std::optional<Error>> made;
    alice.client->create(calendarAt("/alice/never/", alice.account), made);
    ASSERT_TRUE(made.wait());
    const auto error = std::get<0>(made.arguments());
    ASSERT_TRUE(error);
    EXPECT_EQ(error->domain, MNetworkErrorDomain);
    EXPECT_EQ(error->code, int(MNetworkErrorCode::untrusted));
}

} // namespace
} // namespace Tessel::Test
