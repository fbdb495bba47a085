#include "Tessel/CaldavLibrary/Extensions/DateExtension.h"
#include "benchmarks/Table.h"

#include <cstdint>
#include <cstdio>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <unicode/basictz.h>
#include <unicode/smpdtfmt.h>
#include <unicode/vtzone.h>

using namespace Tessel;
using namespace Tessel::Benchmarks;

namespace {

constexpr const char* zoneName = "Europe/Berlin";

/// Zoned date-times as events have them: some years, every time of the day and of the year.
std::vector<std::string> dateTimes(int count)
{
    std::vector<std::string> texts;
    for (int i = 0; i < count; ++i) {
        char text[32];
        std::snprintf(text, sizeof text, "%04d%02d%02dT%02d%02d00", 2015 + i % 15, 1 + i % 12,
            1 + i % 28, 1 + i % 24, i % 60);
        texts.emplace_back(text);
    }
    return texts;
}

int number(const char* digits, int count)
{
    int value = 0;
    for (int i = 0; i < count; ++i)
        value = value * 10 + (digits[i] - '0');
    return value;
}

/// The least that any reader does: digits, taken unchecked, and ICU's look-up of the offset.
std::int64_t digitsAndZone(const std::string& text, const icu::BasicTimeZone& zone)
{
    const char* const digits = text.c_str();
    const int month = number(digits + 4, 2);
    const int year = number(digits, 4) - (month <= 2);
    const int dayOfYear
        = (153 * (month + (month > 2 ? -3 : 9)) + 2) / 5 + number(digits + 6, 2) - 1;
    const std::int64_t days = 365 * year + year / 4 - year / 100 + year / 400 + dayOfYear - 719'468;
    const auto seconds = days * 86'400 + number(digits + 9, 2) % 24 * 3600
        + number(digits + 11, 2) * 60 + number(digits + 13, 2);

    int32_t standard = 0;
    int32_t daylight = 0;
    UErrorCode status = U_ZERO_ERROR;
    zone.getOffsetFromLocal(static_cast<UDate>(seconds * 1000), UCAL_TZ_LOCAL_FORMER,
        UCAL_TZ_LOCAL_LATTER, standard, daylight, status);
    return seconds * 1000 - standard - daylight;
}

/// A zone of a sender's own: rules that began in 1601 and go on, as many servers write them.
std::string ownDefinition()
{
    const auto observance = [](const std::string& kind, const char* lines) {
        return "BEGIN:" + kind + "\r\nDTSTART:16010101T030000\r\n" + lines + "END:" + kind + "\r\n";
    };
    return "BEGIN:VTIMEZONE\r\nTZID:Own\r\n"
        + observance("STANDARD",
            "TZOFFSETFROM:+0200\r\nTZOFFSETTO:+0100\r\n"
            "RRULE:FREQ=YEARLY;BYDAY=-1SU;BYMONTH=10\r\n")
        + observance("DAYLIGHT",
            "TZOFFSETFROM:+0100\r\nTZOFFSETTO:+0200\r\n"
            "RRULE:FREQ=YEARLY;BYDAY=-1SU;BYMONTH=3\r\n")
        + "END:VTIMEZONE\r\n";
}

/// Reads each definition anew and asks it for one offset, as for a resource with one event.
void benchmarkDefinitions()
{
    const auto text = ownDefinition();
    const icu::UnicodeString icuText(text.c_str());
    constexpr int count = 1000;
    const auto read = [&] {
        for (int i = 0; i < count; ++i)
            keep(TimeZone::fromVTimeZone(text, "Own")->secondsFromGMT());
    };
    const auto readByICU = [&] {
        for (int i = 0; i < count; ++i) {
            UErrorCode status = U_ZERO_ERROR;
            const std::unique_ptr<icu::VTimeZone> zone(
                icu::VTimeZone::createVTimeZone(icuText, status));
            int32_t standard = 0;
            int32_t daylight = 0;
            zone->getOffset(icu::Calendar::getNow(), false, standard, daylight, status);
            keep(standard + daylight);
        }
    };
    printRow("1,000 zone definitions, one look-up each: ICU", measure(read, readByICU, 5), "s",
        timesFaster(3));
}

} // namespace

int main()
{
    const auto few = dateTimes(5'000);
    const auto many = dateTimes(50'000);
    const std::optional<TimeZone> zone = TimeZone::withIdentifier(zoneName);
    const std::unique_ptr<icu::TimeZone> icuZone(icu::TimeZone::createTimeZone(zoneName));
    const auto& basicZone = dynamic_cast<const icu::BasicTimeZone&>(*icuZone);

    UErrorCode status = U_ZERO_ERROR;
    icu::SimpleDateFormat formatter(icu::UnicodeString("yyyyMMdd'T'kkmmss"), status);
    formatter.setTimeZone(*icuZone);

    const auto read = [&](const std::vector<std::string>& texts) {
        for (const auto& text : texts)
            keep(iCalDateTime(text, zone));
    };
    const auto readByICU = [&] {
        for (const auto& text : few) {
            status = U_ZERO_ERROR;
            keep(formatter.parse(icu::UnicodeString(text.c_str()), status));
        }
    };
    const auto readByDigits = [&] {
        for (const auto& text : many)
            keep(digitsAndZone(text, basicZone));
    };

    printRow("50,000 zoned date-times: digits and zone look-up",
        measure([&] { read(many); }, readByDigits, 15), "s", timesCost(0.85));
    printRow("5,000 zoned date-times: ICU's formatter, kept",
        measure([&] { read(few); }, readByICU, 5), "s", timesFaster(100));
    benchmarkDefinitions();
}
