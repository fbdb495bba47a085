#include "Tessel/Session/Recurrence/Instances.h"
#include "Tessel/Session/Store/SQLiteStore.h"
#include "benchmarks/Libical.h"
#include "benchmarks/Table.h"

#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <string>
#include <vector>

using namespace Tessel;
using namespace Tessel::Benchmarks;

namespace {

constexpr int events = 10'000;
constexpr std::int64_t day = 86'400'000;
constexpr std::int64_t from = 1'714'348'800'000; // 2024-04-29
constexpr std::int64_t to = from + 14 * day;

constexpr auto zone = "BEGIN:VTIMEZONE\r\nTZID:Europe/Berlin\r\nBEGIN:DAYLIGHT\r\n"
                      "DTSTART:19810329T020000\r\nRRULE:FREQ=YEARLY;BYMONTH=3;BYDAY=-1SU\r\n"
                      "TZNAME:CEST\r\nTZOFFSETFROM:+0100\r\nTZOFFSETTO:+0200\r\nEND:DAYLIGHT\r\n"
                      "BEGIN:STANDARD\r\nDTSTART:19961027T030000\r\n"
                      "RRULE:FREQ=YEARLY;BYMONTH=10;BYDAY=-1SU\r\nTZNAME:CET\r\n"
                      "TZOFFSETFROM:+0200\r\nTZOFFSETTO:+0100\r\nEND:STANDARD\r\nEND:VTIMEZONE\r\n";

/// The days of three years before the range and one after it, every fifth of them a series without
/// an end.
std::string eventText(int number)
{
    constexpr const char* rules[] {"FREQ=WEEKLY;BYDAY=MO,WE", "FREQ=WEEKLY;INTERVAL=2",
        "FREQ=DAILY;BYDAY=MO,TU,WE,TH,FR", "FREQ=MONTHLY;BYDAY=2TU", "FREQ=YEARLY",
        "FREQ=WEEKLY;BYDAY=FR", "FREQ=MONTHLY;BYMONTHDAY=-1", "FREQ=WEEKLY"};
    const bool isSeries = number % 5 == 0;
    const auto start
        = from - 3 * 365 * day + std::int64_t(number) * 7919 % (isSeries ? 1000 : 4 * 365) * day;
    const auto date = EventMoment::utc(Date::fromMillisecondsSince1970(start)).value().substr(0, 8);
    std::string text = "BEGIN:VCALENDAR\r\nVERSION:2.0\r\nPRODID:-//Example//Made//EN\r\n";
    text += zone;
    text += "BEGIN:VEVENT\r\nUID:" + std::to_string(number) + "@example.com\r\n";
    text += "DTSTAMP:20240101T000000Z\r\nDTSTART;TZID=Europe/Berlin:" + date + "T093000\r\n";
    text += "DTEND;TZID=Europe/Berlin:" + date + "T103000\r\nSUMMARY:Event "
        + std::to_string(number)
        + "\r\nLOCATION:Room 5\\, second floor\r\nDESCRIPTION:What is to be said about it\\n"
          "and some more on a second line\r\n";
    if (isSeries) text += std::string("RRULE:") + rules[number / 5 % 8] + "\r\n";
    text += "ORGANIZER;CN=Alice:mailto:alice@example.com\r\n"
            "ATTENDEE;CN=Bob;PARTSTAT=ACCEPTED:mailto:bob@example.com\r\n"
            "BEGIN:VALARM\r\nACTION:DISPLAY\r\nDESCRIPTION:x\r\nTRIGGER:-PT15M\r\nEND:VALARM\r\n"
            "END:VEVENT\r\nEND:VCALENDAR\r\n";
    return text;
}

std::size_t agendaOf(Store& store, const TimeZone& local)
{
    std::size_t found = 0;
    store.visit("/c/", from, to, [&](const Resource& resource) {
        found += instances(resource.text, from, to, local).value().size();
        return true;
    });
    return found;
}

std::size_t agendaByLibical(const std::vector<std::string>& texts)
{
    const auto time = [](std::int64_t moment) {
        return icaltime_from_timet_with_zone(moment / 1000, 0, icaltimezone_get_utc_timezone());
    };
    std::size_t found = 0;
    const auto count
        = [](icalcomponent*, icaltime_span*, void* found) { ++*static_cast<std::size_t*>(found); };
    for (const auto& text : texts) {
        const auto tree = libicalTree(text);
        auto* event = icalcomponent_get_first_component(tree.get(), ICAL_VEVENT_COMPONENT);
        icalcomponent_foreach_recurrence(event, time(from), time(to), count, &found);
    }
    return found;
}

} // namespace

int main()
{
    auto folder = (std::filesystem::temp_directory_path() / "tessel-agenda-XXXXXX").string();
    if (!mkdtemp(folder.data())) return 1;
    const auto open = [&] {
        return SQLiteStore::open(
            folder + "/store", {.user = "alice", .origin = *Origin::ofServer("cal.example.com")})
            .value();
    };
    const auto store = open();
    std::vector<std::string> texts;
    Batch batch {.calendar = "/c/"};
    for (int i = 0; i < events; ++i) {
        texts.push_back(eventText(i));
        batch.upserts.push_back({"/c/" + std::to_string(i) + ".ics", "\"1\"", texts.back()});
    }
    if (!store->put({.href = "/c/"}) || !store->apply(batch)) return 1;

    const auto local = *TimeZone::withIdentifier("Europe/Berlin");
    const auto found = agendaOf(*store, local);
    if (found == 0 || found != agendaByLibical(texts)) {
        std::cerr << "not the same agenda: " << found << ", " << agendaByLibical(texts) << '\n';
        return 1;
    }
    // As a host that has just started: with nothing read yet.
    const auto ours = [&] { keep(agendaOf(*open(), local)); };
    const auto opponent = [&] { keep(agendaByLibical(texts)); };
    printRow("agenda of two weeks out of 10,000 events in SQLite: libical",
        measure(ours, opponent, 2), "s", timesFaster(20));
    std::filesystem::remove_all(folder);
}
