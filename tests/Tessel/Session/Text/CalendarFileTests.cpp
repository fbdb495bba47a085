#include "Tessel/Session/Text/FileEvent.h"
#include "Tessel/Session/Text/JoinedCalendar.h"

#include <gtest/gtest.h>

namespace Tessel {
namespace {

std::string zone(const std::string& name, const std::string& offset = "+0100")
{
    return "BEGIN:VTIMEZONE\r\nTZID:" + name
        + "\r\nBEGIN:STANDARD\r\nDTSTART:19700101T000000\r\nTZOFFSETFROM:" + offset
        + "\r\nTZOFFSETTO:" + offset + "\r\nEND:STANDARD\r\nEND:VTIMEZONE\r\n";
}

std::string event(const std::string& uid, const std::string& zone, const std::string& lines = "")
{
    return "BEGIN:VEVENT\r\n" + (uid.empty() ? "" : "UID:" + uid + "\r\n")
        + "DTSTAMP:20240101T000000Z\r\nDTSTART;TZID=" + zone + ":20270301T100000\r\n" + lines
        + "END:VEVENT\r\n";
}

std::string calendar(const std::string& components, const std::string& head = "")
{
    return "BEGIN:VCALENDAR\r\nVERSION:2.0\r\nPRODID:-//a//b//EN\r\n" + head + components
        + "END:VCALENDAR\r\n";
}

/// UIDs with their texts, or the kinds of their failures.
using Wanted = std::vector<std::pair<std::string, std::string>>;

void expectEvents(const std::string& file, const Wanted& wanted)
{
    const auto events = eventsOfFile(file);
    ASSERT_TRUE(events) << events.reason();
    Wanted found;
    for (const auto& [uid, read] : events.value())
        found.emplace_back(
            uid, read ? read.value().text() : std::string(nameOf(read.failure().kind)));
    EXPECT_EQ(found, wanted) << file;
}

TEST(CalendarFile, IsTakenApartByUID)
{
    const auto changed = event("a", "Two", "RECURRENCE-ID;TZID=One:20270302T100000\r\n");
    const auto series = event("a", "One", "RRULE:FREQ=DAILY\r\nX-KEPT:as\r\n  it was\r\n");
    const auto task = std::string("BEGIN:VTODO\r\nUID:task\r\nEND:VTODO\r\n");
    auto second = calendar(event("c", "Nowhere"));
    second.resize(second.size() - 2); // its last line has no end
    const auto file = calendar(zone("One") + changed + zone("Two") + event("b", "Two") + series
                              + task + event("", "One") + event("", "One"),
                          "METHOD:PUBLISH\r\nX-WR-CALNAME:Name\r\n")
        + second;
    const auto name = std::string("X-WR-CALNAME:Name\r\n");
    const Wanted wanted {
        {"a", calendar(zone("One") + zone("Two") + changed + series, name)},
        {"b", calendar(zone("Two") + event("b", "Two"), name)},
        {"task", "unsupported"},
        {"VEVENT 1 without UID", "malformed"},
        {"VEVENT 2 without UID", "malformed"},
        {"c", calendar(event("c", "Nowhere"))},
    };
    expectEvents(file, wanted);
}

TEST(CalendarFile, NamesWhatCannotBeTaken)
{
    const auto one = event("a", "One");
    const auto other = event("a", "One", "SUMMARY:Other\r\n");
    const auto changed = event("a", "One", "RECURRENCE-ID;TZID=One:20270302T100000\r\n");
    const auto task = std::string("BEGIN:VTODO\r\nUID:a\r\nEND:VTODO\r\n");
    const auto card = std::string("BEGIN:VCARD\r\nFN:Somebody\r\nEND:VCARD\r\n");
    const Wanted outside {
        {"a", calendar(one)}, {"b", "malformed"}, {"VCARD 1 without UID", "malformed"}};
    expectEvents(calendar(one) + event("b", "One") + card, outside);
    // The first of two counts, with what is different on its days.
    const Wanted first {{"a", calendar(one + changed)}, {"a", "malformed"}};
    expectEvents(calendar(one + other + changed), first);
    expectEvents(calendar(one + changed) + calendar(changed + other), first);
    const Wanted second {{"a", calendar(one)}, {"a", "malformed"}};
    expectEvents(calendar(one) + calendar(changed + other), second);
    expectEvents(calendar(one + changed + one + changed) + calendar(one), {first.front()});
    expectEvents(calendar(task + one), {{"a", "unsupported"}, {"a", calendar(one)}});
    expectEvents(calendar(""), {});
    for (const auto& nothing : {std::string("no calendar"), one + other, card})
        EXPECT_EQ(eventsOfFile(nothing).failure().kind, FailureKind::malformed) << nothing;
}

TEST(CalendarFile, IsJoinedOfObjects)
{
    std::string joined;
    const std::string longName(80, 'n');
    JoinedCalendar file("A, \n" + longName, [&](std::string_view piece) { joined.append(piece); });
    auto unended = calendar(zone("One") + event("b", "One"));
    unended.resize(unended.size() - 2);
    const auto other = calendar(zone("One", "+0200") + event("c", "One"));
    const auto both = event("d", "One") + event("d", "Two", "RECURRENCE-ID:20270302T100000Z\r\n");
    // What programs mean by a zone of the database is that zone.
    const std::string berlin = "Europe/Berlin";
    auto bare = calendar(zone(berlin, "+0059") + event("f", berlin));
    std::erase(bare, '\r');
    for (const auto& text : {calendar(zone("One") + event("a", "One")), unended, other,
             calendar(both + zone("Two")), calendar(zone(berlin) + event("e", berlin)), bare}) {
        EXPECT_TRUE(file.add(text));
    }
    EXPECT_FALSE(file.add("BEGIN:VCALENDAR\r\nBEGIN:VEVENT\r\n"));
    file.end();
    EXPECT_EQ(joined,
        "BEGIN:VCALENDAR\r\nVERSION:2.0\r\nPRODID:-//Tessel//Session//EN\r\n"
        "X-WR-CALNAME:A\\, \\n"
            + longName.substr(0, 56) + "\r\n " + longName.substr(56) + "\r\n" + zone("One")
            + event("a", "One") + event("b", "One") + zone("Two") + both + zone(berlin)
            + event("e", berlin) + event("f", berlin) + "END:VCALENDAR\r\n" + other);
}

} // namespace
} // namespace Tessel
