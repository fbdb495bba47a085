#include "Tessel/Platform/Foundation/Time/PosixZone.h"

#include <algorithm>

namespace Tessel {

namespace {

constexpr std::uint32_t allMonths = 0x1FFE;

/// Takes pieces off the front of a text; what cannot be taken spoils the whole.
class Scanner {
public:
    explicit Scanner(std::string_view text)
        : rest_(text)
    {
    }

    bool isGood() const { return good_; }
    bool isAtEnd() const { return rest_.empty(); }

    bool skip(char c)
    {
        if (!rest_.starts_with(c)) return false;
        rest_.remove_prefix(1);
        return true;
    }
    void demand(char c) { good_ = skip(c) && good_; }

    int number(int least, int most)
    {
        int value = 0;
        std::size_t digits = 0;
        for (; digits < std::min<std::size_t>(rest_.size(), 3); ++digits) {
            if (rest_[digits] < '0' || rest_[digits] > '9') break;
            value = value * 10 + (rest_[digits] - '0');
        }
        rest_.remove_prefix(digits);
        good_ = good_ && digits > 0 && value >= least && value <= most;
        return good_ ? value : least;
    }

    /// "CET" or "<+03>".
    void name()
    {
        constexpr auto isLetter
            = [](char c) { return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z'); };
        const bool quoted = skip('<');
        const auto end = quoted ? std::find(rest_.begin(), rest_.end(), '>')
                                : std::find_if_not(rest_.begin(), rest_.end(), isLetter);
        good_ = good_ && end != rest_.begin();
        rest_.remove_prefix(static_cast<std::size_t>(end - rest_.begin()));
        if (quoted) demand('>');
    }

    /// "2", "-2:30" or "+2:30:15" in seconds.
    int clock(int mostHours)
    {
        const bool negative = skip('-');
        if (!negative) skip('+');
        int seconds = number(0, mostHours) * 3600;
        if (skip(':')) seconds += number(0, 59) * 60;
        if (skip(':')) seconds += number(0, 59);
        return negative ? -seconds : seconds;
    }

private:
    std::string_view rest_;
    bool good_ = true;
};

/// "M3.5.0/2", "J60" or "59".
YearlyRule takeRule(Scanner& text)
{
    constexpr int lastWeek = 5;
    YearlyRule rule;
    if (text.skip('M')) {
        rule.months = 1u << text.number(1, 12);
        text.demand('.');
        const int week = text.number(1, lastWeek);
        text.demand('.');
        rule.weekdays = {{text.number(0, 6), week == lastWeek ? -1 : week}};
    } else if (text.skip('J')) {
        // 29 February has no number.
        constexpr int daysBefore[] = {0, 31, 59, 90, 120, 151, 181, 212, 243, 273, 304, 334};
        const int day = text.number(1, 365);
        const auto month = std::lower_bound(std::begin(daysBefore), std::end(daysBefore), day);
        rule.months = 1u << (month - std::begin(daysBefore));
        rule.monthDays = 1u << (day - month[-1]);
    } else {
        rule.months = allMonths;
        rule.yearDay = text.number(0, 365);
    }
    rule.time = text.skip('/') ? text.clock(167) : 2 * 3600;
    return rule;
}

} // namespace

std::optional<PosixZone> readPosixZone(std::string_view text)
{
    Scanner scanner(text);
    scanner.name();
    const int standard = -scanner.clock(24); // POSIX counts west of Greenwich
    PosixZone zone {standard, {}};
    if (!scanner.isGood() || scanner.isAtEnd()) {
        return scanner.isGood() ? std::optional(zone) : std::nullopt;
    }

    scanner.name();
    int daylight = standard + 3600;
    if (!scanner.skip(',')) {
        daylight = -scanner.clock(24);
        scanner.demand(',');
    }
    auto toDaylight = takeRule(scanner);
    scanner.demand(',');
    auto toStandard = takeRule(scanner);
    if (!scanner.isGood() || !scanner.isAtEnd()) return std::nullopt;

    toDaylight.offsetFrom = toStandard.offsetTo = standard;
    toDaylight.offsetTo = toStandard.offsetFrom = daylight;
    toDaylight.isDaylight = true;
    // Where one ends as the other begins, all the year is daylight saving: its rule is the last.
    zone.rules = {std::move(toStandard), std::move(toDaylight)};
    return zone;
}

} // namespace Tessel
