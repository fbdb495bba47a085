#include "Tessel/CaldavLibrary/Extensions/DateExtension.h"

#include "Tessel/CaldavLibrary/Extensions/ICalDatePatterns.h"
#include "Tessel/Platform/Foundation/Base/FatalError.h"
#include "Tessel/Platform/Foundation/Time/DateFormatter.h"

namespace Tessel {

namespace {

const TimeZone& zoneOrUTC(const std::optional<TimeZone>& timeZone)
{
    return timeZone ? *timeZone : TimeZone::UTC();
}

std::string_view patternFor(std::string_view text)
{
    if (text.find_first_not_of("0123456789") == text.npos) return ICalDatePatterns::date;
    if (text.ends_with('Z')) return ICalDatePatterns::utcDateTime;
    return ICalDatePatterns::dateTime;
}

} // namespace

std::string descriptionICalDateTimeFormat(const Date& date, const std::optional<TimeZone>& timeZone)
{
    const auto pattern = timeZone ? ICalDatePatterns::dateTime : ICalDatePatterns::utcDateTime;
    return DateFormatter::string(date, pattern, zoneOrUTC(timeZone));
}

std::string descriptionICalDateFormat(const Date& date, const std::optional<TimeZone>& timeZone)
{
    return DateFormatter::string(date, ICalDatePatterns::date, zoneOrUTC(timeZone));
}

Date iCalDateTime(
    std::string_view string, const std::optional<TimeZone>& timeZone, const CallSite& site)
{
    if (const auto date = iCalDateTimeIfReadable(string, timeZone)) return *date;
    fatalError("not an iCalendar date: \"" + std::string(string.substr(0, 80)) + '"', site);
}

std::optional<Date> iCalDateTimeIfReadable(
    std::string_view string, const std::optional<TimeZone>& timeZone)
{
    return DateFormatter::date(string, patternFor(string), zoneOrUTC(timeZone));
}

} // namespace Tessel
