#include "tests/Tessel/Session/World.h"
#include "tests/support/CaseFile.h"

#include <gtest/gtest.h>

using namespace Tessel;
using namespace Tessel::Test;

namespace {

/// Each with a blank before it.
std::string joined(const std::vector<std::string>& words)
{
    std::string text;
    for (const auto& word : words)
        text.append(" ").append(word, 0, word.find(':'));
    return text;
}

std::string description(const StoredCalendar& calendar)
{
    const auto name = calendar.displayName.empty() ? "" : " " + calendar.displayName;
    return calendar.href + " |" + name + " |" + joined(calendar.components) + " | "
        + (calendar.isWritable ? "rw" : "ro") + " |" + joined(calendar.missing) + "\n";
}

class CalendarListingCase : public testing::TestWithParam<Case> { };

} // namespace

TEST_P(CalendarListingCase, IsAsWritten)
{
    const World world;
    const auto& sections = GetParam().sections;
    std::string contentType;
    world.server->setFault([&](const URLRequest& request, const auto&) {
        contentType = request.headers.value("Content-Type").value_or("");
        return std::optional(FakeCalendarServer::Reply {.status = 207,
            .body
            = R"(<d:multistatus xmlns:d="DAV:" xmlns:c="urn:ietf:params:xml:ns:caldav" )"
              R"(xmlns:cs="http://calendarserver.org/ns/" xmlns:i="http://apple.com/ns/ical/">)"
              "<d:response><d:href>/home/</d:href><d:propstat><d:prop><d:resourcetype>"
              "<d:collection/></d:resourcetype></d:prop></d:propstat></d:response>"
                + sections.at("members") + "</d:multistatus>"});
    });
    const auto calendars = wait(world.session->calendars());
    // Strict servers answer 415 to a type that is none.
    EXPECT_EQ(contentType, "application/xml; charset=utf-8");
    if (sections.contains("failure")) {
        ASSERT_FALSE(calendars);
        EXPECT_EQ(std::string(nameOf(calendars.failure().kind)) + "\n", sections.at("failure"));
        return;
    }
    ASSERT_TRUE(calendars) << calendars.reason();
    std::string listed;
    for (const auto& calendar : calendars.value())
        listed += description(calendar);
    EXPECT_EQ(listed, sections.at("calendars"));
}

INSTANTIATE_TEST_SUITE_P(All, CalendarListingCase,
    testing::ValuesIn(readCases(TESSEL_TEST_DATA "/cases")),
    [](const auto& info) { return info.param.name; });
