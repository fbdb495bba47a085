#include "Tessel/Session/Text/EventText.h"
#include "tests/Tessel/Session/Text/LibicalCheck.h"
#include "tests/Tessel/Session/Text/NewEvents.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>

namespace Tessel {
namespace {

using namespace std::chrono;
using namespace std::chrono_literals;

const auto now = Date::fromSecondsSince1970(1'767'268'800); // 2026-01-01T12:00:00Z
constexpr auto day = local_days(year(2026) / 12 / 28);

/// Lines "name hexadecimal-value" of what the text is to hold, for compare_values.py.
std::string expectedValues(const EventText& event)
{
    std::string lines;
    const auto add = [&](const std::string& name, std::string_view value) {
        lines += name + " ";
        for (const char c : value) {
            char text[4];
            std::snprintf(text, sizeof text, "%02x", static_cast<unsigned char>(c));
            lines += text;
        }
        lines += "\n";
    };
    const auto part = event.main();
    const auto addMoment = [&](const std::string& name, const std::optional<EventMoment>& moment) {
        if (moment) add(name, moment->value());
    };
    add("uid", part.uid());
    for (const auto& [name, value] :
        {std::pair {"summary", part.summary()}, {"description", part.description()},
            {"location", part.location()}, {"url", part.url()}, {"status", part.status()}})
        if (value) add(name, *value);
    for (const auto& category : part.categories())
        add("category", category);
    addMoment("dtstart", part.start());
    addMoment("dtend", part.writtenEnd());
    for (const auto& attendee : part.attendees())
        add("attendee", attendee.name);
    for (const auto& rule : part.recurrence().rules)
        add("rrule", rule);
    for (const auto& alarm : part.alarms())
        add("trigger",
            alarm.at ? EventMoment::utc(*alarm.at).value() : std::to_string(-alarm.before.count()));
    return lines;
}

TEST(NewEvents, HoldWhatTheyAreMadeOf)
{
    for (const auto& edit : newEvents()) {
        SCOPED_TRACE(edit.text());
        const auto made = EventText::make(edit, now);
        ASSERT_TRUE(made) << made.reason();
        const auto& event = made.value();
        const auto part = event.main();
        EXPECT_EQ(libicalErrors(event.text()), 0) << event.text();
        EXPECT_EQ(part.summary().value_or(""), *edit.summary.set());
        if (edit.description.set()) {
            EXPECT_EQ(part.description(), *edit.description.set());
        }
        if (edit.categories.set()) {
            EXPECT_EQ(part.categories(), *edit.categories.set());
        }
        EXPECT_EQ(part.start(), *edit.start.set());
        if (edit.end.set()) {
            EXPECT_EQ(part.writtenEnd(), *edit.end.set());
        }
        EXPECT_EQ(part.attendees(), edit.attendees);
        if (edit.dates.set()) {
            EXPECT_EQ(part.recurrence().dates, *edit.dates.set());
        }
        if (edit.exceptions.set()) {
            EXPECT_EQ(part.recurrence().exceptions, *edit.exceptions.set());
        }
        EXPECT_EQ(part.alarms().size(), edit.alarms.set() ? edit.alarms.set()->size() : 0);
        EXPECT_EQ(part.sequence(), 0);
        std::size_t begin = 0;
        for (auto end = event.text().find('\n'); end != std::string::npos;
             begin = end + 1, end = event.text().find('\n', begin)) {
            EXPECT_LE(end - begin, 76u);
            EXPECT_EQ(event.text()[end - 1], '\r');
        }
        const auto again = event.apply(edit, now);
        ASSERT_TRUE(again) << again.reason();
        EXPECT_EQ(again.value().event.text(), event.text());
        const auto stored = EventEdit::read(edit.text());
        ASSERT_TRUE(stored);
        EXPECT_EQ(stored.value(), edit);
    }
}

TEST(NewEvents, AreReadAlikeByOtherLibraries)
{
    namespace fs = std::filesystem;
    const auto folder
        = fs::temp_directory_path() / ("tessel-new-events-" + std::to_string(std::rand()));
    fs::create_directories(folder);
    int number = 0;
    for (const auto& edit : newEvents()) {
        const auto event = EventText::make(edit, now).value();
        const auto name = folder / std::to_string(number++);
        std::ofstream(name.string() + ".ics", std::ios::binary) << event.text();
        std::ofstream(name.string() + ".values") << expectedValues(event);
    }
    const auto command
        = "/usr/bin/python3 " TESSEL_TEST_DATA "/compare_values.py " + folder.string();
    EXPECT_EQ(std::system(command.c_str()), 0);
    fs::remove_all(folder);
}

TEST(NewEvents, AreRefusedWhereTheyCannotBeWritten)
{
    const auto start = EventMoment::utc(sys_days(year(2026) / 1 / 1));
    const EventEdit refused[] {
        {.summary = "no start"},
        {.summary = "\xFF", .start = start},
        {.start = EventMoment::zoned({}, "Nowhere/Land")},
        {.start = EventMoment::zoned({}, "Europe/Berlin\r\nX:1")},
        {.start = start, .end = EventMoment::utc(sys_days(year(2025) / 1 / 1))},
        {.start = start, .end = EventMoment::day(day)},
        {.start = EventMoment::day(day), .end = EventMoment::day(day)},
        {.start = EventMoment::floating(local_days(year(10'000) / 1 / 1))},
        {.start = start, .rule = "every day"},
        {.start = start, .attendees = {{.address = "a b@example.com"}}},
        {.start = start, .attendees = {{.address = "a@example.com", .role = "X:Y"}}},
        {.start = start, .alarms = {{.action = "EMAIL"}}},
        {.status = "A B", .start = start},
        {.url = "http://a\nb", .start = start},
        {.instance = start, .start = start},
    };
    for (const auto& edit : refused) {
        const auto made = EventText::make(edit, now);
        EXPECT_TRUE(!made && made.failure().kind == FailureKind::malformed) << edit.text();
    }
}

TEST(EventText, HoldsTheZonesThatItNeeds)
{
    const auto text = [](const Result<EditedEvent>& edited) { return edited.value().event.text(); };
    const auto in = [](const std::string& zone) {
        return EventEdit {.start = EventMoment::zoned(day + 9h, zone)};
    };
    const auto berlin = EventText::make(in("Europe/Berlin"), now).value();
    EXPECT_NE(berlin.text().find("TZID:Europe/Berlin\r\n"), std::string::npos);
    const auto tokyo = EventText::read(text(berlin.apply(in("Asia/Tokyo"), now))).value();
    EXPECT_EQ(tokyo.text().find("Europe/Berlin"), std::string::npos);
    EXPECT_NE(tokyo.text().find("TZID:Asia/Tokyo\r\n"), std::string::npos);
    // What others have written stays, needed or not.
    auto foreign = tokyo.text();
    foreign.insert(foreign.find("END:VTIMEZONE"), "X-OTHER:1\r\n");
    const auto back = text(EventText::read(foreign).value().apply(in("Europe/Berlin"), now));
    EXPECT_NE(back.find("TZID:Asia/Tokyo\r\n"), std::string::npos);
}

TEST(EventText, KnowsWhenThingsAre)
{
    const auto read = [](const std::string& lines) {
        return EventText::read(
            "BEGIN:VCALENDAR\nBEGIN:VEVENT\n" + lines + "END:VEVENT\nEND:VCALENDAR\n")
            .value();
    };
    const std::pair<std::string, std::string> ends[] {
        {"DTSTART;VALUE=DATE:20240331\n", "20240401"},
        {"DTSTART:20240331T010000\n", "20240331T010000"},
        {"DTSTART;VALUE=DATE:20240331\nDURATION:P1W\n", "20240407"},
        // Clocks go from 2 to 3 on this day: a day later is 23 hours later, 24 hours are not a day.
        {"DTSTART;TZID=Europe/Berlin:20240330T120000\nDURATION:P1D\n", "20240331T120000"},
        {"DTSTART;TZID=Europe/Berlin:20240330T120000\nDURATION:PT24H\n", "20240331T130000"},
        {"DTSTART:20240331T010000Z\nDTEND:20240331T020000Z\n", "20240331T020000Z"},
    };
    for (const auto& [lines, end] : ends) {
        const auto event = read(lines);
        EXPECT_EQ(event.end(event.main()).value().value(), end) << lines;
    }
    // The text's own definition of a zone comes before the database's.
    const auto event = EventText::read(
        "BEGIN:VCALENDAR\nbegin:vtimezone\ntzid:Europe/"
        "Berlin\nbegin:standard\ndtstart:19700101T000000\n"
        "tzoffsetfrom:+0500\ntzoffsetto:+0500\nend:standard\nend:vtimezone\nBEGIN:VEVENT\n"
        "DTSTART;TZID=Europe/Berlin:20240101T120000\nEND:VEVENT\nEND:VCALENDAR\n")
                           .value();
    const auto utc = [](const EventText& text, const EventMoment& moment) {
        return EventMoment::utc(text.dateOf(moment)).value();
    };
    EXPECT_EQ(utc(event, *event.main().start()), "20240101T070000Z");
    // A time that clocks skip, and one that they show twice.
    const auto berlin = [](const char* time) { return *EventMoment::read(time, "Europe/Berlin"); };
    const auto known = read("DTSTART:20240101T120000Z\n");
    EXPECT_EQ(utc(known, berlin("20240331T023000")), "20240331T013000Z");
    EXPECT_EQ(utc(known, berlin("20241027T023000")), "20241027T003000Z");
}

} // namespace
} // namespace Tessel
