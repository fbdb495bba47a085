#include "Tessel/icalendar/CGICalendarDate.h"

#include "Tessel/Platform/Foundation/Time/DateFormatter.h"

namespace Tessel {

static constexpr std::string_view iCalendarPattern = "YYYYMMdd'T'kkmmss'Z'";

// Made anew each time: the zone of the process can change.
static DateFormatter localISOFormatter()
{
    return {.dateFormat = "YYYY-MM-dd kk:mm:ss",
        .timeZone = TimeZone::local(),
        .weekRules = DateFormatter::WeekRules::systemLocale};
}

std::string descriptionICalendar(const Date& date)
{
    return DateFormatter::string(date, iCalendarPattern, TimeZone::UTC());
}

std::string descriptionISO8601(const Date& date)
{
    return localISOFormatter().string(date);
}

std::optional<Date> dateWithICalendarString(std::string_view text)
{
    return DateFormatter::date(text, iCalendarPattern, TimeZone::UTC());
}

std::optional<Date> dateWithICalendarISO8601(std::string_view text)
{
    return localISOFormatter().date(text);
}

} // namespace Tessel
