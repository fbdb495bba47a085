#include "fuzz/FuzzTarget.h"
#include "fuzz/ReadEvents.h"

#include <algorithm>
#include <chrono>
#include <cmath>

namespace Tessel::Fuzz {

namespace {

/// Whether the written date is the date: years are those of weeks around New Year.
bool isWrittenTrue(const Date& date)
{
    using namespace std::chrono;
    const auto day
        = floor<days>(sys_time<milliseconds>(milliseconds(date.millisecondsSince1970())));
    const year_month_day civil(day);
    const bool isNearNewYear = (civil.month() == December && unsigned(civil.day()) > 24)
        || (civil.month() == January && unsigned(civil.day()) < 8);
    return civil.year() > year(1600) && civil.year() < year(9999) && !isNearNewYear;
}

template <class Unit = std::chrono::seconds>
void requireSameDate(const Date& written, const Date& read)
{
    const auto units = [](const Date& date) {
        return std::chrono::floor<Unit>(std::chrono::milliseconds(date.millisecondsSince1970()));
    };
    require(!isWrittenTrue(written) || units(written) == units(read), "a date changes");
}

/// An end whose zone the text defines.
void requireSameEnd(const std::string& text, const Date& written,
    const std::optional<TimeZone>& zone, const Date& read, const std::optional<TimeZone>& readZone)
{
    if (!zone || text.find("\nTZID:" + zone->identifier() + "\n") == text.npos) return;
    require(readZone && readZone->identifier() == zone->identifier(), "a zone changes");
    if (*readZone == *zone) requireSameDate(written, read);
}

/// A line loses the line ends of any script at its end.
bool isSameAtLineEnd(std::string_view written, std::string_view read)
{
    return written.starts_with(read)
        && written.find_first_not_of("\n\v\f\r\xC2\x85\xE2\x80\xA8\xA9", read.size())
        == written.npos;
}

void requireSameAttendees(const MRVEvent& written, const MRVEvent& read)
{
    require(written.attendees->size() == read.attendees->size(), "an attendee is lost or found");
    for (std::size_t i = 0; i < read.attendees->size(); ++i) {
        const auto& a = *(*written.attendees)[i];
        const auto& b = *(*read.attendees)[i];
        require(a.isOrganizer == b.isOrganizer && isSameAtLineEnd("mailto:" + a.email, b.href),
            "an attendee changes");
        if (a.isOrganizer) continue;
        require(a.cn == b.cn && a.role == b.role && a.type == b.type, "a participant changes");
    }
}

void requireSameAlarms(const MRVEvent& written, const MRVEvent& read)
{
    require(written.alarms->size() == read.alarms->size(), "an alarm is lost or found");
    for (std::size_t i = 0; i < read.alarms->size(); ++i) {
        const auto& a = *(*written.alarms)[i];
        const auto& b = *(*read.alarms)[i];
        require(a.desc == b.desc, "the text of an alarm changes");
        if (a.absoluteTriggerTime) {
            require(!b.relativeTriggerTime, "a fixed trigger becomes another");
        } else {
            require(a.relativeTriggerTime == b.relativeTriggerTime, "a trigger changes");
        }
    }
}

void requireSameEvent(const std::string& text, const MRVEvent& written, const MRVEvent& read)
{
    require(written.uid == read.uid && written.summary == read.summary
            && written.status == read.status && written.desc.value_or("") == read.desc
            && written.recurRule == read.recurRule,
        "a text changes");
    require(written.allDay == read.allDay, "a day becomes a time or a time a day");
    requireSameDate(written.lastModifiedDate, read.lastModifiedDate);
    if (!written.allDay) {
        requireSameEnd(
            text, written.startDate, written.startTimeZone, read.startDate, read.startTimeZone);
        requireSameEnd(text, written.endDate, written.endTimeZone, read.endDate, read.endTimeZone);
    } else {
        if (!written.startTimeZone)
            requireSameDate<std::chrono::days>(written.startDate, read.startDate);
        if (!written.endTimeZone) requireSameDate<std::chrono::days>(written.endDate, read.endDate);
    }
    requireSameAttendees(written, read);
    requireSameAlarms(written, read);
}

/// Whether the text says all of the event: folding loses the end of some lines, a zone's name may
/// hold what ends a parameter, and the parts of a trigger of a hundred million years are rounded.
bool isWrittenWhole(const std::string& text, const MRVEvent& event)
{
    const auto breaksLine = [](const std::optional<TimeZone>& zone) {
        return zone && zone->identifier().find_first_of(":;=") != std::string::npos;
    };
    const auto isRounded = [](const std::shared_ptr<MRVAlarm>& alarm) {
        return std::abs(alarm->relativeTriggerTime.value_or(0)) >= 0x1p53;
    };
    return text.find("\r\n ", text.find("\nBEGIN:VEVENT\n")) == text.npos
        && !breaksLine(event.startTimeZone) && !breaksLine(event.endTimeZone)
        && std::none_of(event.alarms->begin(), event.alarms->end(), isRounded);
}

/// An event of any text that is written, and read again, keeps what the writer promises to keep.
const Target eventText("event-text", [](std::string_view input) {
    const auto event = eventOf(std::string(input));
    if (!event) return;
    std::optional<std::string> text;
    endsOrStopsFor({}, [&] { text = event->iCalendarString(); });
    if (!text || !isWrittenWhole(*text, *event)) return;

    const auto again = eventOf(*text);
    require(again != nullptr, "the event is lost");
    requireSameEvent(*text, *event, *again);
});

} // namespace

} // namespace Tessel::Fuzz
