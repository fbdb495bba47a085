#include "benchmarks/Corpus.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>
#include <string_view>
#include <utility>

namespace Tessel::Benchmarks {

namespace {

constexpr std::array<std::string_view, 24> words {"budget", "review", "with", "the", "team",
    "quarterly", "figures", "and", "travel", "plan", "für", "Zürich", "please", "bring", "your",
    "notes", "agenda", "https://meet.example.org/room/4711", "dial-in", "workshop", "customers",
    "open", "questions", "schedule"};
constexpr std::array<std::string_view, 8> people {"Anna Berg", "Björn Lund", "Carla Mendes",
    "David O'Neill", "Emi Tanaka", "Farid Haddad", "Greta Huber", "Hugo Martin"};

// The same numbers on every machine.
class Numbers {
public:
    explicit Numbers(std::size_t seed)
        : state_(seed * 0x9E3779B97F4A7C15u + 1)
    {
    }
    std::size_t below(std::size_t bound)
    {
        state_ = state_ * 6364136223846793005u + 1442695040888963407u;
        return std::size_t(state_ >> 33) % bound;
    }

private:
    std::uint64_t state_;
};

class Lines {
public:
    Lines& add(std::string_view line)
    {
        constexpr std::size_t foldedOctets = 74;
        for (bool first = true; first || !line.empty(); first = false) {
            auto end = std::min(first ? foldedOctets + 1 : foldedOctets, line.size());
            while (end < line.size() && (line[end] & 0xC0) == 0x80)
                --end;
            if (!first) text.append(" ");
            text.append(line.substr(0, end)).append("\r\n");
            line.remove_prefix(end);
        }
        return *this;
    }

    std::string text;
};

} // namespace

static std::string sentence(Numbers& numbers, std::size_t count)
{
    std::string text;
    for (std::size_t i = 0; i < count; ++i) {
        if (i != 0) text += i % 9 == 8 ? "\\, " : " ";
        text += words[numbers.below(words.size())];
        if (i % 17 == 16) text += ".\\n";
    }
    return text;
}

static std::string person(Numbers& numbers, std::string_view property, std::string_view parameters)
{
    const auto index = numbers.below(people.size());
    const auto number = std::to_string(numbers.below(100));
    return std::string(property) + ";CN=\"" + std::string(people[index]) + "\""
        + std::string(parameters) + ";EMAIL=person" + number + "@example.org:mailto:person" + number
        + "@example.org";
}

static void addTimeZone(Lines& lines)
{
    lines.add("BEGIN:VTIMEZONE").add("TZID:Europe/Berlin").add("X-LIC-LOCATION:Europe/Berlin");
    lines.add("BEGIN:DAYLIGHT")
        .add("TZNAME:CEST")
        .add("TZOFFSETFROM:+0100")
        .add("TZOFFSETTO:+0200");
    lines.add("DTSTART:19810329T020000").add("RRULE:FREQ=YEARLY;BYMONTH=3;BYDAY=-1SU");
    lines.add("END:DAYLIGHT");
    lines.add("BEGIN:STANDARD").add("TZNAME:CET").add("TZOFFSETFROM:+0200").add("TZOFFSETTO:+0100");
    lines.add("DTSTART:19961027T030000").add("RRULE:FREQ=YEARLY;BYMONTH=10;BYDAY=-1SU");
    lines.add("END:STANDARD").add("END:VTIMEZONE");
}

static void addEvent(Lines& lines, std::size_t index)
{
    Numbers numbers(index);
    std::array<char, 64> buffer;
    const auto formatted = [&](const char* format, auto... values) {
        std::snprintf(buffer.data(), buffer.size(), format, values...);
        return std::string(buffer.data());
    };
    const auto day = formatted("2024%02u%02u", unsigned(1 + index % 12), unsigned(1 + index % 28));
    const auto hour = unsigned(8 + index % 10);

    lines.add("BEGIN:VEVENT");
    lines.add(formatted("UID:%08zX-5E55-4E1A-9C0D-00005EED%04zX", index, index % 65536));
    lines.add("DTSTAMP:20231205T101112Z").add("CREATED:20231201T080000Z");
    lines.add("LAST-MODIFIED:20231205T101112Z").add("SEQUENCE:" + std::to_string(index % 4));
    lines.add("DTSTART;TZID=Europe/Berlin:" + day + formatted("T%02u0000", hour));
    lines.add("DTEND;TZID=Europe/Berlin:" + day + formatted("T%02u3000", hour + 1));
    if (index % 5 == 0) lines.add("RRULE:FREQ=WEEKLY;INTERVAL=2;BYDAY=MO,WE;COUNT=20");
    lines.add("SUMMARY:" + sentence(numbers, 5)).add("LOCATION:" + sentence(numbers, 3));
    lines.add("DESCRIPTION:" + sentence(numbers, 48));
    lines.add("STATUS:CONFIRMED").add("TRANSP:OPAQUE").add("CLASS:PUBLIC").add("PRIORITY:5");
    lines.add("CATEGORIES:Work,Meeting");
    lines.add(person(numbers, "ORGANIZER", ""));
    for (const auto* status : {"ACCEPTED", "NEEDS-ACTION", "TENTATIVE"}) {
        lines.add(person(numbers, "ATTENDEE",
            std::string(";CUTYPE=INDIVIDUAL;ROLE=REQ-PARTICIPANT;PARTSTAT=") + status
                + ";RSVP=TRUE"));
    }
    lines.add("BEGIN:VALARM").add("ACTION:DISPLAY").add("TRIGGER:-PT15M");
    lines.add("DESCRIPTION:Reminder").add("END:VALARM");
    lines.add("END:VEVENT");
}

static void begin(Lines& lines)
{
    lines.add("BEGIN:VCALENDAR")
        .add("VERSION:2.0")
        .add("PRODID:-//Example Corp.//Calendar 1.0//EN");
    lines.add("CALSCALE:GREGORIAN");
}

std::string eventResource(std::size_t index)
{
    Lines lines;
    begin(lines);
    addTimeZone(lines);
    addEvent(lines, index);
    lines.add("END:VCALENDAR");
    return std::move(lines.text);
}

std::vector<std::string> eventResources(std::size_t count)
{
    std::vector<std::string> resources;
    for (std::size_t i = 0; i < count; ++i)
        resources.push_back(eventResource(i));
    return resources;
}

std::string eventHref(std::size_t index)
{
    return "/calendars/alice/work/event-" + std::to_string(index) + ".ics";
}

std::string eventETag(std::size_t index)
{
    return "\"etag-" + std::to_string(index * 7919) + "\"";
}

std::string calendarFile(std::size_t count)
{
    Lines lines;
    begin(lines);
    for (std::size_t i = 0; i < count; ++i) {
        addTimeZone(lines);
        addEvent(lines, i);
    }
    lines.add("END:VCALENDAR");
    return std::move(lines.text);
}

static std::string escaped(std::string_view text)
{
    std::string result;
    for (const char c : text) {
        if (c == '&')
            result += "&amp;";
        else if (c == '<')
            result += "&lt;";
        else if (c == '>')
            result += "&gt;";
        else
            result += c;
    }
    return result;
}

static std::string response(std::size_t index, bool withCalendarData)
{
    std::string text = "<d:response><d:href>" + eventHref(index)
        + "</d:href><d:propstat><d:prop><d:getetag>" + escaped(eventETag(index)) + "</d:getetag>";
    if (withCalendarData) {
        text += "<c:calendar-data>" + escaped(eventResource(index)) + "</c:calendar-data>";
    }
    return text + "</d:prop><d:status>HTTP/1.1 200 OK</d:status></d:propstat></d:response>";
}

std::string multigetResponse(std::size_t index)
{
    return response(index, true);
}

std::string multistatus(std::string_view responses)
{
    std::string text = "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n"
                       "<d:multistatus xmlns:d=\"DAV:\" xmlns:c=\"urn:ietf:params:xml:ns:caldav\">";
    return text.append(responses).append("</d:multistatus>\n");
}

static std::string answer(std::size_t count, bool withCalendarData)
{
    std::string responses;
    for (std::size_t i = 0; i < count; ++i)
        responses += response(i, withCalendarData);
    return multistatus(responses);
}

std::string multigetAnswer(std::size_t count)
{
    return answer(count, true);
}

std::string entityTagAnswer(std::size_t count)
{
    return answer(count, false);
}

} // namespace Tessel::Benchmarks
