#include "apps/tessel/EventChanges.h"
#include "apps/tessel/EventReading.h"

#include <gtest/gtest.h>

namespace Tessel::App {
namespace {

TEST(EventTextTest, EscapesTextBothWays)
{
    const std::string plain = "Käse, Wurst; C:\\neu\nzweite Zeile";
    EXPECT_EQ(escaped(plain), "Käse\\, Wurst\\; C:\\\\neu\\nzweite Zeile");
    EXPECT_EQ(unescaped(escaped(plain)), plain);
    EXPECT_EQ(unescaped("a\\Nb\\"), "a\nb\\") << "a lone backslash at the end stays";
}

TEST(EventTextTest, ReadsExactlyOneEvent)
{
    const auto of = [](const std::string& events) {
        return "BEGIN:VCALENDAR\r\nVERSION:2.0\r\n" + events + "END:VCALENDAR\r\n";
    };
    const std::string event
        = "BEGIN:VEVENT\r\nUID:1\r\nSUMMARY:A & <B>\r\n"
          "DTSTART:20270118T090000Z\r\nDTEND:20270118T100000Z\r\nEND:VEVENT\r\n";
    const auto read = readEvent(of(event), nullptr, "/c/<1>.ics", "\"tag\"");
    ASSERT_TRUE(read);
    EXPECT_EQ(read->summary, "A & <B>");
    EXPECT_EQ(read->href, "/c/<1>.ics");
    EXPECT_EQ(read->eTag, "\"tag\"");
    EXPECT_EQ(readEvent(of(""), nullptr), nullptr);
    EXPECT_EQ(readEvent(of(event + event), nullptr), nullptr);
    EXPECT_THROW(
        readEvent(of("BEGIN:VEVENT\r\nSUMMARY:A\r\nEND:VEVENT\r\n"), nullptr), std::runtime_error);
}

TEST(EventChangesTest, ChangesOnlyWhatIsGiven)
{
    const auto berlin = TimeZone::withIdentifier("Europe/Berlin").value();
    const MRVEvent event {.uid = "1",
        .href = "/c/1.ics",
        .eTag = "old",
        .desc = "kept",
        .status = "CONFIRMED",
        .summary = "before",
        .startDate = Date::fromSecondsSince1970(0),
        .endDate = Date::fromSecondsSince1970(3600),
        .startTimeZone = berlin,
        .endTimeZone = berlin};
    const auto changed = EventChanges {.summary = "a, b", .start = "2027-07-18T09:30"}.applied(
        event, nullptr, "seen");
    EXPECT_EQ(changed->summary, "a\\, b");
    EXPECT_EQ(changed->desc, "kept");
    EXPECT_EQ(changed->eTag, "seen");
    EXPECT_EQ(changed->startDate, Date::fromSecondsSince1970(1'815'895'800)) << "07:30 in UTC";
    EXPECT_EQ(changed->endDate, event.endDate);

    const auto day
        = EventChanges {.start = "2027-07-18", .end = "2027-07-19"}.applied(event, nullptr, "");
    EXPECT_TRUE(day->allDay);
    EXPECT_EQ(day->startTimeZone, std::nullopt);
    EXPECT_THROW(
        EventChanges {.start = "tomorrow"}.applied(event, nullptr, ""), std::runtime_error);
    EXPECT_THROW(
        EventChanges {.zone = "Mars/Base"}.applied(event, nullptr, ""), std::runtime_error);
}

} // namespace
} // namespace Tessel::App
