#include "Tessel/Session/Text/EventText.h"
#include "Tessel/Session/Text/TextPatch.h"
#include "tests/Tessel/Session/Text/LibicalCheck.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <set>

namespace Tessel {
namespace {

namespace fs = std::filesystem;
using namespace std::chrono;
using namespace std::chrono_literals;

const auto now = Date::fromSecondsSince1970(1'800'000'000);
const std::string newZone = "Asia/Tokyo";

struct NamedEdit {
    std::string name;
    EventEdit edit;
    std::set<std::string> properties; ///< of events, beside the stamps
    std::set<std::string> components = {};
};

EventMoment at(int day, int hour, const std::string& zone = newZone)
{
    return EventMoment::zoned(local_days(year(2025) / 3 / day) + hours(hour), zone);
}

const std::set<std::string> recurrence {
    "DTSTART", "DTEND", "DURATION", "RRULE", "RDATE", "EXDATE", "RECURRENCE-ID", "SEQUENCE"};

const std::vector<NamedEdit> edits {
    {"summary", {.summary = "New, and \"longer\"; than\nbefore: " + std::string(80, 'x')},
        {"SUMMARY"}},
    {"texts", {.description = "Grüße 🍝", .location = cleared, .url = "https://example.com/a,b;c"},
        {"DESCRIPTION", "LOCATION", "URL"}},
    {"status", {.status = "cancelled", .categories = {"A, b", "c;d"}},
        {"STATUS", "CATEGORIES", "SEQUENCE"}},
    {"attendees",
        {.organizer = EventAttendee {.address = "zoe@example.com", .name = "Zoë \"Z\""},
            .attendees = {{.address = "new@example.com", .name = "New: one", .rsvp = true},
                {.address = "bob@example.com", .status = "DECLINED"}},
            .removedAttendees = {"carol@example.com"}},
        {"ORGANIZER", "ATTENDEE"}},
    {"alarms", {.alarms = {{15min}, {.before = -5min, .isFromEnd = true}}}, {}, {"VALARM"}},
    {"time", {.start = at(3, 9), .end = at(3, 11)}, recurrence, {"VTIMEZONE"}},
    {"day", {.start = EventMoment::day(local_days(year(2025) / 3 / 3))}, recurrence},
    // One that gives all days that the corpus excepts or changes.
    {"rule", {.rule = "FREQ=DAILY;COUNT=3000"}, {"RRULE", "SEQUENCE"}},
};

std::string contentOf(const fs::path& path)
{
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

bool isOneOf(const std::set<std::string>& names, const std::string& name)
{
    return names.contains(inCapitals(name));
}

void appendOthers(
    const TextComponent& component, const NamedEdit& edit, std::vector<std::string_view>& lines)
{
    static const std::set<std::string> stamps {"DTSTAMP", "LAST-MODIFIED"};
    const bool isEvent = component.is("VEVENT");
    lines.push_back(component.begin().raw());
    for (const auto line : component.lines()) {
        const bool isNamed
            = isEvent && (isOneOf(edit.properties, line.name()) || isOneOf(stamps, line.name()));
        if (!isNamed) lines.push_back(line.raw());
    }
    for (const auto inner : component.components())
        if (!isOneOf(edit.components, inner.name())) appendOthers(inner, edit, lines);
    lines.push_back(component.end().raw());
}

/// All lines that the edit does not name.
std::vector<std::string_view> others(const EventText& event, const NamedEdit& edit)
{
    std::vector<std::string_view> lines;
    for (const auto calendar : event.tree().components())
        appendOthers(calendar, edit, lines);
    return lines;
}

class CorpusTests : public testing::TestWithParam<fs::path> {
protected:
    const std::string text = contentOf(GetParam());
    const Result<EventText> read = EventText::read(text);
};

TEST_P(CorpusTests, ComesBackByteForByte)
{
    ASSERT_TRUE(read) << read.reason();
    const auto& event = read.value();
    EXPECT_EQ(event.text(), text);
    EXPECT_EQ(TextPatch(event.tree()).apply(), text);
    std::string joined = text.substr(0, text.find_first_not_of("\xEF\xBB\xBF"));
    for (std::uint32_t i = 0; i < event.tree().index().lines.size(); ++i)
        joined += event.tree().index().line(i).raw();
    EXPECT_EQ(joined, text);
    // An edit that sets what is there.
    const auto same = event.apply(
        {.summary = event.main().summary().value_or("x"), .start = *event.main().start()}, now);
    ASSERT_TRUE(same) << same.reason();
    if (event.main().summary()) {
        EXPECT_EQ(same.value().event.text(), text);
    }
}

TEST_P(CorpusTests, LosesNothingThatAnEditDoesNotName)
{
    const auto& event = read.value();
    const auto errors = libicalErrors(text);
    for (const auto& named : edits) {
        SCOPED_TRACE(named.name);
        const auto edited = event.apply(named.edit, now);
        if (!edited) {
            ADD_FAILURE() << edited.reason();
            continue;
        }
        const auto& result = edited.value().event;
        EXPECT_EQ(others(result, named), others(event, named));
        EXPECT_LE(libicalErrors(result.text()), errors) << result.text();
        const auto again = result.apply(named.edit, now);
        EXPECT_TRUE(again && again.value().event.text() == result.text())
            << result.text() << again.value().event.text();
    }
}

TEST_P(CorpusTests, LosesNothingForOneInstance)
{
    const auto& event = read.value();
    const auto start = event.main().recurrenceId().value_or(*event.main().start());
    const auto hasOne = event.overrideOf(start).has_value();
    const auto changed = event.apply({.instance = start, .summary = "Once"}, now);
    ASSERT_TRUE(changed) << changed.reason();
    const auto own = changed.value().event.overrideOf(start);
    if (event.isSeries() && !hasOne) {
        ASSERT_TRUE(own);
        EXPECT_EQ(own->summary(), "Once");
        auto rest = changed.value().event.text();
        rest.erase(rest.find(own->component().raw()), own->component().raw().size());
        EXPECT_EQ(rest, text);
    } else {
        EXPECT_EQ(others(changed.value().event, {"", {}, {"SUMMARY"}}),
            others(event, {"", {}, {"SUMMARY"}}));
    }
    const auto removed = event.apply({.instance = start, .isRemoval = true}, now);
    ASSERT_EQ(bool(removed), event.isSeries());
    if (!event.isSeries()) return;
    const NamedEdit exception {"", {}, {"EXDATE", "SEQUENCE"}};
    EXPECT_EQ(others(removed.value().event, exception), others(event, exception));
    EXPECT_LE(libicalErrors(removed.value().event.text()), libicalErrors(text));
}

INSTANTIATE_TEST_SUITE_P(Texts, CorpusTests, testing::ValuesIn([] {
    std::vector<fs::path> paths;
    for (const auto& entry : fs::directory_iterator(TESSEL_TEST_DATA "/corpus"))
        paths.push_back(entry.path());
    return paths;
}()),
    [](const auto& info) {
        auto name = info.param.stem().string();
        std::replace(name.begin(), name.end(), '-', '_');
        return name;
    });

} // namespace
} // namespace Tessel
