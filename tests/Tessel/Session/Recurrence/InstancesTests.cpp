#include "Tessel/Session/Recurrence/Instances.h"
#include "Tessel/Session/Recurrence/Moment.h"
#include "Tessel/Session/Recurrence/TextBounds.h"
#include "Tessel/Session/Text/EventText.h"
#include "tests/support/CaseFile.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <set>
#include <sstream>

using namespace Tessel;

namespace {

std::string calendarOf(const std::string& lines)
{
    std::istringstream stream(lines);
    std::string text = "BEGIN:VCALENDAR\r\n";
    for (std::string line; std::getline(stream, line);)
        text += (line == "[" ? "BEGIN:VEVENT" : line == "]" ? "END:VEVENT" : line) + "\r\n";
    return text + "END:VCALENDAR\r\n";
}

std::int64_t timeOf(const std::string& text)
{
    return EventMoment::read(text)->local.time_since_epoch().count() * 1000;
}

std::string written(std::int64_t time)
{
    return EventMoment::utc(Date::fromMillisecondsSince1970(time)).value();
}

std::string described(const Instance& instance)
{
    auto text = written(instance.start) + "/" + written(instance.end);
    if (instance.isAllDay) text += " day";
    if (instance.isFloating) text += " floating";
    if (instance.isCancelled) text += " cancelled";
    if (instance.isChanged) text += " changed";
    if (const auto& id = instance.recurrenceId)
        text += " " + (id->zone.empty() ? "" : id->zone + ":") + id->value();
    return text + "\n";
}

class InstancesCase : public testing::TestWithParam<Case> {
protected:
    InstancesCase()
    {
        std::istringstream range(sections["range"]);
        std::string from;
        std::string to;
        std::string zone;
        range >> from >> to >> zone;
        find = [=](const std::string& text) {
            return instances(text, timeOf(from), timeOf(to), *TimeZone::withIdentifier(zone))
                .value();
        };
    }

    std::map<std::string, std::string> sections = GetParam().sections;
    std::string text = calendarOf(sections["text"]);
    std::function<std::vector<Instance>(const std::string&)> find; ///< in the range
};

std::multiset<std::string> timesOf(const std::vector<Instance>& instances)
{
    std::multiset<std::string> times;
    for (const auto& each : instances)
        times.insert(written(each.start) + "/" + written(each.end));
    return times;
}

} // namespace

TEST_P(InstancesCase, IsAsWritten)
{
    std::string all;
    const auto reach = bounds(text);
    for (const auto& instance : find(text)) {
        all += described(instance);
        EXPECT_TRUE(reach.meets({instance.start, instance.end + 1})) << "bounds leave it out";
    }
    EXPECT_EQ(all, sections["instances"]);
}

/// An edit of what an event says moves none of its instances.
TEST_P(InstancesCase, IsTheSameWhateverIsSaidOfOneDayOrOfAllThatFollow)
{
    const auto event = EventText::read(text);
    if (!event) return; // a task
    // Of one series: with others in the text, instances could not be told apart.
    const auto parts = std::count(sections["text"].begin(), sections["text"].end(), '[');
    if (parts != std::ptrdiff_t(event.value().overrides().size()) + 1) return;
    const auto before = find(text);
    for (const auto& instance : before) {
        for (const bool andFollowing : {false, true}) {
            if (!instance.recurrenceId || !event.value().isSeries()) continue;
            const auto edited = event.value().apply({.instance = instance.recurrenceId,
                .andFollowing = andFollowing,
                .location = "Elsewhere"});
            SCOPED_TRACE(described(instance) + (andFollowing ? "and all that follow" : ""));
            if (!edited) {
                EXPECT_EQ(edited.failure().kind, FailureKind::unsupported) << edited.reason();
                continue;
            }
            const auto& [first, following] = edited.value();
            auto after = timesOf(find(first.text()));
            if (following) after.merge(timesOf(find(following->text())));
            EXPECT_EQ(after, timesOf(before))
                << first.text() << (following ? following->text() : "");
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Instances, InstancesCase,
    testing::ValuesIn(readCases(TESSEL_TEST_DATA "/cases")),
    [](const auto& info) { return info.param.name; });

TEST(Instances, SayWhichComponentTheyAreOfAndWhatClocksShow)
{
    const auto text = calendarOf("BEGIN:VTIMEZONE\nTZID:x\nEND:VTIMEZONE\n[\n"
                                 "DTSTART;TZID=Europe/Berlin:20240101T090000\nDURATION:PT1H\n"
                                 "RRULE:FREQ=DAILY;COUNT=2\n]\n[\nRECURRENCE-ID:20240102T080000Z\n"
                                 "DTSTART;VALUE=DATE:20240102\n]\n");
    const auto found = instances(
        text, timeOf("20240101"), timeOf("20240104"), *TimeZone::withIdentifier("Asia/Tokyo"))
                           .value();
    ASSERT_EQ(found.size(), 2U);
    EXPECT_EQ(found[0].component, 1U);
    EXPECT_EQ(written(found[0].localEnd), "20240101T100000Z");
    EXPECT_EQ(found[1].component, 2U);
    EXPECT_EQ(written(found[1].start), "20240101T150000Z") << "when the day begins in Tokyo";
    EXPECT_EQ(written(found[1].localStart), "20240102T000000Z");
    EXPECT_EQ(written(found[1].localEnd), "20240103T000000Z");
}

TEST(Instances, AreBoundedHoweverManyThereAre)
{
    const auto text = calendarOf("[\nDTSTART:19700101T000000Z\nRRULE:FREQ=SECONDLY\n]\n");
    EXPECT_EQ(
        instances(text, timeOf("20240101"), timeOf("20240301"), TimeZone::UTC()).value().size(),
        100'000U);
    const auto all = instances(text, std::numeric_limits<std::int64_t>::min(),
        std::numeric_limits<std::int64_t>::max(), TimeZone::UTC());
    EXPECT_EQ(all.value().size(), 100'000U);
    EXPECT_FALSE(instances("BEGIN:VCALENDAR\r\n", 0, 1, TimeZone::UTC()));
}

TEST(Instances, AreNoneOrSaidToBeUnknown)
{
    const auto reasonFor = [](const std::string& lines) {
        const auto text = calendarOf("[\n" + lines + "\n]\n");
        const auto found = instances(text, timeOf("20270301"), timeOf("20270302"), TimeZone::UTC());
        EXPECT_EQ(bounds(text) == Bounds::always(), !found) << lines;
        return found ? std::to_string(found.value().size()) : found.reason();
    };
    const std::string good = "DTSTART:20270301T100000Z\n]\n[\n";
    const std::string end = "\nDTEND:20270301T230000Z";
    const std::pair<std::string, std::string> cases[] {
        {"DTSTART:20270301T240000Z",
            "The start of the event cannot be read: \"20270301T240000Z\"."},
        {"DTSTART:20270230T100000Z" + end,
            "The start of the event cannot be read: \"20270230T100000Z\"."},
        {"DTSTART:", "The start of the event cannot be read: \"\"."},
        {"DTSTART:" + std::string(5000, 'x'), "The start of the event cannot be read."},
        {good + "SUMMARY:x", "The event has no start."},
        {good + "DTSTART:x\nRECURRENCE-ID:20270301T120000Z", "2"},
        {"DTSTART:20270301T100000Z\n]\nBEGIN:VTODO\nEND:VTODO\n[\nDTSTART:20270401T100000Z", "1"},
    };
    for (const auto& [lines, wanted] : cases)
        EXPECT_EQ(reasonFor(lines), wanted);
}

TEST(Bounds, HoldAllInstancesAndLittleMore)
{
    constexpr auto endless = std::numeric_limits<std::int64_t>::max();
    const struct {
        const char* lines;
        const char* first;
        const char* last; ///< null for no end
    } cases[] {
        {"DTSTART:20240110T090000Z\nDTEND:20240110T100000Z", "20240109T090000Z",
            "20240111T100000Z"},
        {"DTSTART:20240110T090000Z\nRRULE:FREQ=DAILY;COUNT=3", "20240109T090000Z",
            "20240113T090000Z"},
        {"DTSTART:20240110T090000Z\nRRULE:FREQ=WEEKLY;INTERVAL=2;BYDAY=MO,WE;COUNT=4",
            "20240109T090000Z", "20240208T090000Z"},
        {"DTSTART:20240110T090000Z\nRRULE:FREQ=WEEKLY;BYDAY=MO;COUNT=3", "20240109T090000Z",
            "20240125T090000Z"},
        {"DTSTART:20240110T090000Z\nRRULE:FREQ=WEEKLY;COUNT=9999", "20240109T090000Z", nullptr},
        {"DTSTART:20240110T090000Z\nRRULE:FREQ=DAILY;UNTIL=20240112", "20240109T090000Z",
            "20240114T000000Z"},
        {"DTSTART:20240110T090000Z\nRRULE:FREQ=DAILY", "20240109T090000Z", nullptr},
        {"DTSTART:20240110T090000Z\nRRULE:FREQ=SECONDLY;COUNT=999999", "20240109T090000Z", nullptr},
        {"DTSTART:20240110T090000Z\nRDATE:20230101T000000Z,20250101T000000Z", "20221231T000000Z",
            "20250102T000000Z"},
        {"DTSTART:20240110T090000Z\n]\n[\nRECURRENCE-ID:20240110T090000Z\nDTSTART:20200101T000000Z",
            "20191231T000000Z", "20240111T090000Z"},
    };
    for (const auto& [lines, first, last] : cases) {
        const auto found = bounds(calendarOf(std::string("[\n") + lines + "\n]\n"));
        EXPECT_EQ(found.first, timeOf(first)) << lines;
        EXPECT_EQ(found.last, last ? timeOf(last) : endless) << lines;
    }
    EXPECT_EQ(bounds("nothing"), Bounds::always());
    EXPECT_EQ(bounds(calendarOf("BEGIN:VTODO\nEND:VTODO\n")), Bounds::never());
}
