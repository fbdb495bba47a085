#include "CaldavLibrary/Parsers/MRVAccountDetailsParser.h"
#include "CaldavLibrary/Parsers/MRVCalendarParser.h"
#include "support/LogRecorder.h"
#include "support/TestHost.h"

#include <gtest/gtest.h>

using namespace Tessel;
using namespace Tessel::Test;

namespace {

std::string multistatus(const std::string& content)
{
    return R"(<D:multistatus xmlns:D="DAV:" xmlns:C="urn:ietf:params:xml:ns:caldav")"
           R"( xmlns:CS="http://calendarserver.org/ns/" xmlns:I="http://apple.com/ns/ical/">)"
        + content + "</D:multistatus>";
}

const std::string zone = "<C:calendar-timezone>BEGIN:VCALENDAR&#13;\nBEGIN:VTIMEZONE&#13;\n"
                         "TZID:Europe/Berlin&#13;\nEND:VTIMEZONE&#13;\nEND:VCALENDAR&#13;\n"
                         "</C:calendar-timezone>";

/// The properties that every calendar must have, but for the one named.
std::string requiredBut(const std::string& left = "")
{
    const std::pair<const char*, std::string> properties[] = {
        {"displayname", "<D:displayname><![CDATA[Work & Play]]></D:displayname>"},
        {"getctag", "<CS:getctag>c1</CS:getctag>"},
        {"sync-token", "<D:sync-token>s1</D:sync-token>"},
        {"supported-calendar-component-set",
            "<C:supported-calendar-component-set><C:comp name='VEVENT'/>"
            "<C:comp name='VTODO'/></C:supported-calendar-component-set>"},
        {"current-user-privilege-set",
            "<D:current-user-privilege-set><D:privilege><D:read/></D:privilege>"
            "<D:privilege><D:write/></D:privilege></D:current-user-privilege-set>"},
        {"owner", "<D:owner><D:href>/p/alice/</D:href></D:owner>"},
        {"calendar-timezone", zone},
    };
    std::string text;
    for (const auto& [name, property] : properties) {
        if (name != left) text += property;
    }
    return text;
}

std::string calendarWith(const std::string& properties, const std::string& type = "<C:calendar/>")
{
    return "<D:response><D:href>/cal/</D:href><D:propstat><D:prop><D:resourcetype><D:collection/>"
        + type + "</D:resourcetype>" + properties
        + "</D:prop><D:status>HTTP/1.1 200 OK</D:status></D:propstat></D:response>";
}

std::optional<std::vector<std::shared_ptr<MRVCalendar>>> parse(const std::string& responses)
{
    return MRVCalendarParser(Data(multistatus(responses)), knownAccount()).parseCalendars();
}

std::shared_ptr<MRVCalendar> only(
    const std::string& properties, const std::string& type = "<C:calendar/>")
{
    const auto calendars = parse(calendarWith(properties, type));
    if (!calendars || calendars->size() != 1) throw std::runtime_error("not one calendar");
    return calendars->front();
}

} // namespace

TEST(MRVCalendarParser, ReadsTheRequiredProperties)
{
    const auto calendar = only(requiredBut());
    EXPECT_EQ(calendar->calID, "account/cal/");
    EXPECT_EQ(calendar->href, "/cal/");
    EXPECT_EQ(calendar->displayName, "Work & Play");
    EXPECT_EQ(calendar->cTag, "c1");
    EXPECT_EQ(calendar->syncToken, "s1");
    EXPECT_EQ(calendar->owner, "/p/alice/");
    EXPECT_EQ(calendar->timeZone.identifier(), "Europe/Berlin");
    EXPECT_EQ(calendar->supportedComponents->rawValue(), 7);
    EXPECT_EQ(calendar->privileges->rawValue(), 6);
    EXPECT_FALSE(calendar->includeInBusyTime);
    EXPECT_FALSE(calendar->isShared);
    EXPECT_FALSE(calendar->color || calendar->desc || calendar->sharees || calendar->sharingModes);
}

TEST(MRVCalendarParser, LeavesOutACalendarThatLacksARequiredProperty)
{
    for (const auto name : {"displayname", "getctag", "sync-token", "owner", "calendar-timezone",
             "supported-calendar-component-set", "current-user-privilege-set"}) {
        const auto calendars = parse(calendarWith(requiredBut(name)));
        ASSERT_TRUE(calendars) << name;
        EXPECT_TRUE(calendars->empty()) << name;
    }
    EXPECT_TRUE(parse(calendarWith(requiredBut("owner") + "<D:owner/>"))->empty());
}

TEST(MRVCalendarParser, ReadsTheOptionalProperties)
{
    const auto calendar = only(requiredBut() + R"(
        <C:calendar-description>What I do</C:calendar-description>
        <I:calendar-color>#FF2968FF</I:calendar-color><I:calendar-order> 3</I:calendar-order>
        <CS:pre-publish-url>/publish/</CS:pre-publish-url>
        <C:schedule-calendar-transp><C:opaque/></C:schedule-calendar-transp>
        <CS:allowed-sharing-modes><CS:can-be-published/><CS:never-shared/></CS:allowed-sharing-modes>
        <CS:invite>
          <CS:organizer><D:href>mailto:o@example.com</D:href>
            <CS:organizer-first>Otto</CS:organizer-first><CS:organizer-last>Opel</CS:organizer-last>
          </CS:organizer>
          <CS:user><D:href>mailto:a@example.com</D:href><CS:access><CS:read-write/></CS:access><CS:invite-accepted/></CS:user>
          <CS:user><D:href>/p/b/</D:href><CS:access><CS:read/></CS:access><CS:invite-declined/></CS:user>
          <CS:user><D:href>mailto:mailto:c</D:href><CS:invite-deleted/></CS:user>
          <CS:user><D:href>d</D:href><CS:invite-noresponse/></CS:user>
        </CS:invite>)",
        "<C:calendar/><CS:shared-owner/>");
    EXPECT_EQ(calendar->desc, "What I do");
    EXPECT_EQ(calendar->color, "#FF2968FF");
    EXPECT_EQ(calendar->order, " 3");
    EXPECT_EQ(calendar->prePublishURL, "/publish/");
    EXPECT_TRUE(calendar->includeInBusyTime);
    EXPECT_TRUE(calendar->isShared);
    EXPECT_EQ(calendar->sharingModes->rawValue(), 6);
    EXPECT_EQ(calendar->organizerName, "Otto Opel");
    EXPECT_EQ(calendar->organizerEmail, "mailto:o@example.com");

    ASSERT_EQ(calendar->sharees->size(), 4u);
    const auto expect = [&](std::size_t i, const char* email, MRVSharedCalendarAccess access,
                            MRVInviteStatus status) {
        const auto& sharee = *calendar->sharees->at(i);
        EXPECT_EQ(sharee.email, email);
        EXPECT_EQ(sharee.access, access);
        EXPECT_EQ(sharee.status, status);
    };
    using Access = MRVSharedCalendarAccess;
    expect(0, "a@example.com", Access::readWrite, MRVInviteStatus::accepted);
    expect(1, "/p/b/", Access::readOnly, MRVInviteStatus::declined);
    expect(2, "c", Access::readOnly, MRVInviteStatus::deleted);
    expect(3, "d", Access::readOnly, MRVInviteStatus::noResponse);
}

TEST(MRVCalendarParser, MapsPrivilegesAndComponentsByName)
{
    const auto privileges = [](const std::string& elements) {
        return only(requiredBut("current-user-privilege-set") + "<D:current-user-privilege-set>"
            + elements + "</D:current-user-privilege-set>")
            ->privileges->rawValue();
    };
    EXPECT_EQ(privileges("<D:privilege><D:all/></D:privilege>"), 1);
    EXPECT_EQ(privileges("<D:privilege><D:write-content/></D:privilege><D:privilege>"
                         "<D:write-properties/></D:privilege><D:privilege>"
                         "<D:read-current-user-privilege-set/></D:privilege>"),
        128 + 64 + 16);
    EXPECT_EQ(privileges("<D:privilege><C:read-free-busy/></D:privilege>"), 256);
    EXPECT_EQ(privileges("<D:privilege><D:read-free-busy/><D:bind/></D:privilege>"), 0);
    EXPECT_EQ(privileges(""), 0);

    const auto components = [](const std::string& elements) {
        return only(requiredBut("supported-calendar-component-set")
            + "<C:supported-calendar-component-set>" + elements
            + "</C:supported-calendar-component-set>")
            ->supportedComponents->rawValue();
    };
    EXPECT_EQ(components("<C:comp name='VEVENT'/>"), 3);
    EXPECT_EQ(components("<C:comp name='VJOURNAL'/><C:comp name='vevent'/>"), 1);
    EXPECT_EQ(components(""), 1);
}

TEST(MRVCalendarParser, TellsAnEmptyListingFromNone)
{
    EXPECT_FALSE(parse(""));
    EXPECT_FALSE(MRVCalendarParser(Data(), knownAccount()).parseCalendars());
    EXPECT_FALSE(MRVCalendarParser(Data("<html>no"), knownAccount()).parseCalendars());

    const LogRecorder log;
    const auto calendars = parse(calendarWith(requiredBut(), "")
        + "<D:response><D:href>/x</D:href><D:propstat><D:prop/></D:propstat></D:response>");
    ASSERT_TRUE(calendars);
    EXPECT_TRUE(calendars->empty());
    EXPECT_TRUE(log.holds("no calendarElement"));
    EXPECT_TRUE(log.holds("no resourceType"));
}

TEST(MRVCalendarParserDeathTest, StopsWhereTheListingBreaksItsContract)
{
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_DEATH(
        MRVCalendarParser(Data(multistatus(calendarWith(requiredBut()))), nullptr).parseCalendars(),
        "without an account");
    EXPECT_DEATH(parse(calendarWith(requiredBut("displayname") + "<D:displayname/>")),
        "no text in the required element displayname");
    EXPECT_DEATH(parse(calendarWith(requiredBut("calendar-timezone")
                     + "<C:calendar-timezone>nonsense</C:calendar-timezone>")),
        "no zone can be read");
    EXPECT_DEATH(parse(calendarWith(requiredBut("supported-calendar-component-set")
                     + "<C:supported-calendar-component-set><C:comp/>"
                       "</C:supported-calendar-component-set>")),
        "component has no name");
    EXPECT_DEATH(parse(calendarWith(requiredBut() + "<CS:invite><CS:user/></CS:invite>")),
        "sharee has no address");
}

TEST(MRVAccountDetailsParser, TakesTheLastSuccessfulAnswer)
{
    const auto home = [](const char* path, const char* status) {
        return std::string("<D:response><D:propstat><D:prop><C:calendar-home-set><D:href>") + path
            + "</D:href></C:calendar-home-set></D:prop><D:status>" + status
            + "</D:status></D:propstat></D:response>";
    };
    const auto details = MRVAccountDetailsParser(
        Data(multistatus(home("/a/", "HTTP/1.1 200 OK") + home("/b/", "HTTP/1.1 200 OK")
            + home("/c/", "HTTP/1.1 404 Not Found"))),
        nullptr)
                             .parseAccountDetails();
    ASSERT_TRUE(details);
    EXPECT_EQ(details->size(), 1u);
    EXPECT_EQ(std::get<std::string>(details->at("MRVKeyCalendarHomeURL")), "/b/");
    EXPECT_FALSE(MRVAccountDetailsParser(Data(), nullptr).parseAccountDetails());
}
