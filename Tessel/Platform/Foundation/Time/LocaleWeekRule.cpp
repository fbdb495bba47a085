#include "Tessel/Platform/Foundation/Time/LocaleWeekRule.h"

#include <string>

#include <unicode/gregocal.h>
#include <unicode/locid.h>

namespace Tessel {

namespace {

WeekRule weekRule(const icu::Locale& locale)
{
    UErrorCode status = U_ZERO_ERROR;
    const icu::GregorianCalendar calendar(*icu::TimeZone::getGMT(), locale, status);
    if (U_FAILURE(status)) return {.firstDayOfWeek = UCAL_MONDAY, .minimalDaysInFirstWeek = 1};
    return {.firstDayOfWeek = calendar.getFirstDayOfWeek(status),
        .minimalDaysInFirstWeek = calendar.getMinimalDaysInFirstWeek()};
}

} // namespace

WeekRule currentLocaleWeekRule()
{
    // Making a calendar costs microseconds, comparing a locale's name almost nothing.
    thread_local std::string name;
    thread_local WeekRule rule = rootLocaleWeekRule();

    const auto& locale = icu::Locale::getDefault();
    if (name != locale.getName()) {
        rule = weekRule(locale);
        name = locale.getName();
    }
    return rule;
}

WeekRule rootLocaleWeekRule()
{
    static const WeekRule rule = weekRule(icu::Locale::getRoot());
    return rule;
}

} // namespace Tessel
