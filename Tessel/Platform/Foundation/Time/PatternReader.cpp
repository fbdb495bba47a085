#include "Tessel/Platform/Foundation/Time/PatternReader.h"

#include "Tessel/Platform/Foundation/Base/Limits.h"
#include "Tessel/Platform/Foundation/Time/DatePattern.h"

#include <unicode/calendar.h>
#include <unicode/smpdtfmt.h>

#include <memory>
#include <string>

namespace Tessel {

namespace {

icu::UnicodeString icuText(std::string_view text)
{
    return icu::UnicodeString::fromUTF8(
        icu::StringPiece(text.data(), static_cast<int32_t>(text.size())));
}

bool holdsOneOf(std::string_view letters, std::string_view pattern)
{
    DatePattern parts(pattern);
    while (const auto part = parts.next()) {
        if (!part->isLiteral() && letters.find(part->letter) != letters.npos) return true;
    }
    return false;
}

/// ICU takes a week-based year for what it is and then ignores month and day.
std::string withPlainYears(std::string_view pattern)
{
    std::string plain(pattern);
    if (holdsOneOf("w", pattern)) return plain;
    bool quoted = false;
    for (char& c : plain) {
        if (c == '\'') quoted = !quoted;
        if (c == 'Y' && !quoted) c = 'y';
    }
    return plain;
}

icu::Locale gregorianLocale()
{
    icu::Locale locale;
    UErrorCode status = U_ZERO_ERROR;
    locale.setKeywordValue("calendar", "gregorian", status);
    return locale;
}

/// The offset that the calendar's own zone has at the calendar's time.
int offsetOf(const icu::Calendar& calendar, UErrorCode& status)
{
    return calendar.get(UCAL_ZONE_OFFSET, status) + calendar.get(UCAL_DST_OFFSET, status);
}

/// The zone in which the text is to be read: that which it names, if the database knows it.
std::optional<TimeZone> namedZone(const icu::Calendar& calendar)
{
    icu::UnicodeString name;
    std::string identifier;
    calendar.getTimeZone().getID(name).toUTF8String(identifier);
    return TimeZone::withIdentifier(identifier);
}

} // namespace

std::optional<Date> readByPattern(
    std::string_view text, std::string_view pattern, const TimeZone& timeZone)
{
    if (text.size() > Limits::dateBytes || pattern.size() > Limits::dateBytes) return std::nullopt;
    UErrorCode status = U_ZERO_ERROR;
    const auto locale = gregorianLocale();
    icu::SimpleDateFormat format(icuText(withPlainYears(pattern)), locale, status);
    const std::unique_ptr<icu::Calendar> calendar(
        icu::Calendar::createInstance(*icu::TimeZone::getGMT(), locale, status));
    if (U_FAILURE(status) || !calendar) return std::nullopt;
    format.setLenient(false);
    calendar->setLenient(false);
    calendar->clear();

    const auto source = icuText(text);
    icu::ParsePosition position(0);
    format.parse(source, *calendar, position);
    if (position.getErrorIndex() >= 0 || position.getIndex() != source.length())
        return std::nullopt;
    const auto moment = calendar->getTime(status);
    const auto offset = offsetOf(*calendar, status);
    if (U_FAILURE(status)) return std::nullopt;

    const auto milliseconds = static_cast<std::int64_t>(moment);
    const auto date = Date::fromMillisecondsSince1970(milliseconds);
    if (!holdsOneOf("zZOvVXx", pattern)) return timeZone.dateFromLocalMilliseconds(milliseconds);
    // ICU's rules of a named zone may be older than the database's.
    const auto zone = namedZone(*calendar);
    if (!zone || zone->secondsFromGMT(date) * 1000 == offset) return date;
    return zone->dateFromLocalMilliseconds(milliseconds + offset);
}

} // namespace Tessel
