#include "icalendar/CGICalendarDate.h"

#include "Platform/Foundation/DateFormatter.h"

namespace Tessel {

static const DateFormatter& iCalendarFormatter()
{
    static const DateFormatter formatter {
        .dateFormat = "YYYYMMdd'T'kkmmss'Z'", .timeZone = TimeZone::UTC()};
    return formatter;
}

// Made anew each time: the zone of the process can change.
static DateFormatter localISOFormatter()
{
    return {.dateFormat = "YYYY-MM-dd kk:mm:ss",
        .timeZone = TimeZone::local(),
        .weekRules = DateFormatter::WeekRules::systemLocale};
}

std::string descriptionICalendar(const Date& date)
{
    return iCalendarFormatter().string(date);
}

std::string descriptionISO8601(const Date& date)
{
    return localISOFormatter().string(date);
}

std::optional<Date> dateWithICalendarString(std::string_view text)
{
    return iCalendarFormatter().date(text);
}

std::optional<Date> dateWithICalendarISO8601(std::string_view text)
{
    return localISOFormatter().date(text);
}

} // namespace Tessel
