#include "Tessel/Platform/Foundation/Time/DateFormatter.h"

#include <gtest/gtest.h>

#include <unicode/smpdtfmt.h>

#include <memory>
#include <random>
#include <vector>

using namespace Tessel;

namespace {

constexpr std::int64_t hour = 3'600'000;
constexpr std::int64_t day = 24 * hour;

const std::vector<const char*> zones {"UTC", "Europe/Berlin", "America/New_York",
    "Australia/Lord_Howe", "Asia/Kathmandu", "Pacific/Apia", "Africa/Monrovia"};

TimeZone zoneNamed(const char* identifier)
{
    return TimeZone::withIdentifier(identifier).value();
}

void setDefaultLocale(const icu::Locale& locale)
{
    UErrorCode status = U_ZERO_ERROR;
    icu::Locale::setDefault(locale, status);
}

/// Changes ICU's default locale for one scope.
class DefaultLocale {
public:
    explicit DefaultLocale(const char* name) { setDefaultLocale(icu::Locale(name)); }
    ~DefaultLocale() { setDefaultLocale(before_); }

private:
    const icu::Locale before_ = icu::Locale::getDefault();
};

/// ICU's formatter with ASCII digits and the Gregorian calendar.
class Opponent {
public:
    Opponent(const char* pattern, const std::string& locale, const char* zone)
        : format_(icu::UnicodeString(pattern),
            icu::Locale((locale + "@calendar=gregorian;numbers=latn").c_str()), status_)
    {
        format_.adoptTimeZone(icu::TimeZone::createTimeZone(zone));
    }

    std::string string(std::int64_t milliseconds) const
    {
        icu::UnicodeString text;
        format_.format(static_cast<UDate>(milliseconds), text);
        std::string result;
        return text.toUTF8String(result);
    }
    std::int64_t milliseconds(const std::string& text)
    {
        status_ = U_ZERO_ERROR;
        return static_cast<std::int64_t>(format_.parse(icu::UnicodeString(text.c_str()), status_));
    }

private:
    UErrorCode status_ = U_ZERO_ERROR;
    icu::SimpleDateFormat format_;
};

std::int64_t millisecondsOf(int year, int month, int day)
{
    const auto text
        = std::to_string(year) + "-" + std::to_string(month) + "-" + std::to_string(day);
    return DateFormatter::date(text, "Y-M-d", TimeZone::UTC()).value().millisecondsSince1970();
}

/// Moments where calendars and clocks do unusual things, and many ordinary ones.
std::vector<std::int64_t> interestingMoments()
{
    std::vector<std::int64_t> moments;
    std::mt19937_64 random(20240102);
    std::uniform_int_distribution<std::int64_t> anyTime(
        millisecondsOf(1500, 1, 1), millisecondsOf(2100, 12, 31));
    for (int i = 0; i < 1500; ++i)
        moments.push_back(anyTime(random));
    for (int year = 1575; year <= 2100; year += year < 1590 ? 1 : 7) {
        for (int offset = -8; offset <= 8; ++offset)
            moments.push_back(millisecondsOf(year, 1, 1) + offset * day + hour / 2);
    }
    for (int offset = -400; offset <= 400; ++offset)
        moments.push_back(millisecondsOf(1582, 10, 15) + offset * day);
    for (std::int64_t time = millisecondsOf(2024, 1, 1); time < millisecondsOf(2025, 1, 1);
         time += 7 * hour)
        moments.push_back(time - 1);
    return moments;
}

/// Closely around every change of clocks in some years, and a few ordinary times.
std::vector<std::int64_t> localTimesToRead(const TimeZone& zone)
{
    std::vector<std::int64_t> times;
    int before = zone.secondsFromGMT(Date::fromMillisecondsSince1970(millisecondsOf(2009, 1, 1)));
    for (auto time = millisecondsOf(2009, 1, 1); time < millisecondsOf(2026, 1, 1); time += hour) {
        const int offset = zone.secondsFromGMT(Date::fromMillisecondsSince1970(time));
        for (int minutes = -240; offset != before && minutes <= 240; minutes += 10)
            times.push_back(time + offset * 1000 + minutes * 60'000);
        before = offset;
    }
    const auto moments = interestingMoments();
    for (std::size_t i = 0; i < moments.size(); i += 10)
        times.push_back(moments[i]);
    return times;
}

void expectWrittenAsByICU(const char* pattern, const char* zone,
    const std::vector<std::int64_t>& moments,
    const std::string& locale = icu::Locale::getDefault().getName())
{
    SCOPED_TRACE(testing::Message() << pattern << " in " << zone << " for " << locale);
    const DateFormatter formatter {.dateFormat = pattern, .timeZone = zoneNamed(zone)};
    const Opponent opponent(pattern, locale, zone);
    for (const auto moment : moments)
        ASSERT_EQ(
            formatter.string(Date::fromMillisecondsSince1970(moment)), opponent.string(moment))
            << moment;
}

std::string read(const char* text, const char* pattern = "YYYYMMdd'T'kkmmss")
{
    const auto date = DateFormatter::date(text, pattern, TimeZone::UTC());
    if (!date) return "none";
    return DateFormatter::string(*date, "YYYY-MM-dd HH:mm:ss", TimeZone::UTC());
}

} // namespace

TEST(DateFormatter, WritesAsICUDoesInEveryZone)
{
    for (const auto* const zone : zones)
        expectWrittenAsByICU("YYYY-MM-dd kk:mm:ss H", zone, interestingMoments());
    for (const auto* const pattern : {"'T''T' ''k", "d.M.Y", "'unclosed d", "YYYY/MM/dd, HH"})
        expectWrittenAsByICU(pattern, "UTC",
            {0, -1, millisecondsOf(999, 5, 1), -70'000'000'000'000, 300'000'000'000'000});
}

TEST(DateFormatter, WritesTheWeekYearOfTheDefaultLocaleAtThatMoment)
{
    for (const auto* const locale : {"en_US", "de_DE", "ar_EG", "th_TH", "fa_IR", "en_GB", "pt_PT",
             "dv_MV", "", "en_US@fw=wed", "de_DE_POSIX"}) {
        const DefaultLocale scope(locale);
        expectWrittenAsByICU("YYYYMMdd'T'kkmmss", "Europe/Berlin", interestingMoments(), locale);
    }
}

TEST(DateFormatter, WeekYearFollowsTheChosenRules)
{
    // A Sunday: the last day of a week in Germany and of week 53, the first of week 1 in the USA.
    const auto sunday = Date::fromMillisecondsSince1970(millisecondsOf(2021, 1, 3));
    const auto year = [&](DateFormatter::WeekRules rules) {
        return DateFormatter::string(sunday, "YYYY", TimeZone::UTC(), rules);
    };
    const DefaultLocale german("de_DE");
    EXPECT_EQ(year(DateFormatter::WeekRules::currentLocale), "2020");
    EXPECT_EQ(year(DateFormatter::WeekRules::systemLocale), "2021");
    const DefaultLocale american("en_US");
    EXPECT_EQ(year(DateFormatter::WeekRules::currentLocale), "2021");
}

TEST(DateFormatter, ReadsLocalTimesAsICUDoesAlsoInGapsAndRepeats)
{
    // ICU reads `yyyy` where ours is `YYYY`: the year written is the year.
    const Opponent utc("yyyyMMdd'T'HHmmss", "en_US", "UTC");
    for (const auto* const zone : zones) {
        Opponent opponent("yyyyMMdd'T'HHmmss", "en_US", zone);
        const auto timeZone = zoneNamed(zone);
        for (const auto local : localTimesToRead(timeZone)) {
            const auto text = utc.string(local);
            const auto date = DateFormatter::date(text, "YYYYMMdd'T'HHmmss", timeZone);
            ASSERT_TRUE(date.has_value()) << text;
            ASSERT_EQ(date->millisecondsSince1970(), opponent.milliseconds(text))
                << zone << " " << text;
        }
    }
}

TEST(DateFormatter, ReadsTheWholeTextStrictly)
{
    EXPECT_EQ(read("20240102T090000"), "2024-01-02 09:00:00");
    EXPECT_EQ(read("20240102T000000"), "2024-01-02 00:00:00");
    EXPECT_EQ(read("20240102T240000"), "2024-01-02 00:00:00");
    EXPECT_EQ(read("20240102T243000"), "2024-01-02 00:30:00");
    EXPECT_EQ(read("20240102", "YYYYMMdd"), "2024-01-02 00:00:00");
    EXPECT_EQ(read("20240229", "YYYYMMdd"), "2024-02-29 00:00:00");
    EXPECT_EQ(read("5.11.2024", "d.M.Y"), "2024-11-05 00:00:00");
    EXPECT_EQ(read("2024-01-02 24:59:59", "YYYY-MM-dd kk:mm:ss"), "2024-01-02 00:59:59");

    for (const auto* const text : {"", "2", "20240102", "20240102T", "20240102T09000",
             "20240102T0900000", "20240102T090000Z", "20240102T090000 ", " 20240102T090000",
             "20240102t090000", "20240102 090000", "20241302T090000", "20240002T090000",
             "20240230T090000", "20230229T090000", "20240100T090000", "20240132T090000",
             "20240102T250000", "20240102T096000", "20240102T090060", "2024010aT090000",
             "+0240102T090000", "-0240102T090000", "2024 102T090000", "15821010T000000"})
        EXPECT_EQ(read(text), "none") << text;
    EXPECT_EQ(read("24", "HH"), "none");
    EXPECT_EQ(read("9999999999", "Y"), "none");
    EXPECT_EQ(read("999999999", "Y"), "none");
    EXPECT_EQ(read("", "d"), "none");
    EXPECT_EQ(read("", ""), "1970-01-01 00:00:00");
    EXPECT_EQ(read("\xD9\xA2\xD9\xA0\xD9\xA2\xD9\xA4", "YYYY"), "none"); // Arabic digits
}

TEST(DateFormatter, ReadsOtherPatternsByICU)
{
    const DefaultLocale american("en_US");
    const struct {
        const char* text;
        const char* pattern;
        const char* date; ///< with the year of its week
    } cases[] = {
        {"2 January 2024, 9:05", "d MMMM yyyy, H:mm", "2024-01-02 09:05:00"},
        {"Tue, 02 Jan 2024 09:05:07", "EEE, dd MMM YYYY HH:mm:ss", "2024-01-02 09:05:07"},
        {"30 December 2024", "d MMMM YYYY", "2025-12-30 00:00:00"},
        {"2025-W01-1", "YYYY-'W'ww-e", "2025-12-29 00:00:00"},
        {"9:05 PM", "h:mm a", "1970-01-01 21:05:00"},
        {"20240102T240507.250", "yyyyMMdd'T'kkmmss.SSS", "2024-01-02 00:05:07"},
        {"'2024' T", "''yyyy'' 'T'", "2024-01-01 00:00:00"},
        {"2024-01-02T09:00:00+02:00", "yyyy-MM-dd'T'HH:mm:ssZZZZZ", "2024-01-02 07:00:00"},
        {"2024-07-02 09:00 Europe/Berlin", "yyyy-MM-dd HH:mm VV", "2024-07-02 07:00:00"},
        {"2024-07-02 09:00 America/Mexico_City", "yyyy-MM-dd HH:mm VV", "2024-07-02 15:00:00"},
        {"30 Feb 2024", "d MMM yyyy", "none"},
        {"2 Jan 2024 ", "d MMM yyyy", "none"},
        {"2 Jan 2024x", "d MMM yyyy", "none"},
        {"2 Foo 2024", "d MMM yyyy", "none"},
        {"", "d MMM yyyy", "none"},
        {"\xFF\xFE", "MMM", "none"},
        {"2024", "J", "none"}, // no pattern
        {"2024", "bbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbb", "none"},
    };
    for (const auto& [text, pattern, date] : cases)
        EXPECT_EQ(read(text, pattern), date) << text << " by " << pattern;
    EXPECT_FALSE(DateFormatter::date(std::string(5'000'000, '1'), "MMM", TimeZone::UTC()));

    const DefaultLocale thai("th_TH"); // whose calendar counts 543 years more
    EXPECT_EQ(read("2 \xE0\xB8\xA1.\xE0\xB8\x84. 2024", "d MMM yyyy"), "2024-01-02 00:00:00");
}

TEST(DateFormatter, ReadsOtherPatternsInTheZoneOfTheDatabase)
{
    const DefaultLocale american("en_US");
    for (const auto* const zone : {"America/Mexico_City", "Africa/Cairo", "Europe/Berlin"}) {
        EXPECT_EQ(DateFormatter::date("2 Jul 2024", "d MMM yyyy", zoneNamed(zone)),
            DateFormatter::date("20240702", "YYYYMMdd", zoneNamed(zone)))
            << zone;
    }
}

TEST(DateFormatter, WritesNothingByPatternsItDoesNotKnow)
{
    for (const auto* const pattern : {"YYYYMMMdd", "YY", "EEEE", "yyyy", "kkk", "YYYYYYYYYYYY"})
        EXPECT_EQ(DateFormatter::string(Date(), pattern, TimeZone::UTC()), "") << pattern;
}
