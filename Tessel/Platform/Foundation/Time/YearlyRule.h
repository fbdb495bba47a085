#pragma once

#include <cstdint>
#include <limits>
#include <optional>
#include <vector>

namespace Tessel {

/// A change of clocks that comes again every year, or every few years. Its times are seconds since
/// 1970 as clocks show them before the change.
struct YearlyRule {
    struct Weekday {
        int day; ///< 0 is Sunday
        int ordinal; ///< from the begin of the month, negative from its end; 0 is every one

        friend bool operator==(const Weekday&, const Weekday&) = default;
    };

    static constexpr auto never = std::numeric_limits<std::int64_t>::max() / 4;

    std::uint32_t months = 0; ///< bit 1 is January
    std::uint32_t monthDays = 0; ///< bit 1 is the first day
    std::uint32_t monthDaysFromEnd = 0; ///< bit 1 is the last day
    std::vector<Weekday> weekdays; ///< with days of the month too, both must fit
    std::optional<int> yearDay; ///< 0 is 1 January; instead of days of the month and weekdays
    std::int64_t time = 0; ///< seconds after midnight; may reach into other days
    int interval = 1; ///< in years, counted from that of `first`
    std::int64_t first = -never;
    std::int64_t last = never;
    int offsetFrom = 0;
    int offsetTo = 0;
    bool isDaylight = false;

    /// The latest change at or before a time; none when there is none for decades.
    std::optional<std::int64_t> latestOnset(std::int64_t notAfter) const;
    /// The earliest change at or after a time.
    std::optional<std::int64_t> earliestOnset(std::int64_t notBefore) const;

    friend bool operator==(const YearlyRule&, const YearlyRule&) = default;

private:
    std::optional<std::int64_t> latestDay(std::int64_t notAfter) const;
    std::optional<std::int64_t> earliestDay(std::int64_t notBefore) const;
    std::int64_t yearsBeyondInterval(std::int64_t year) const;
    std::uint32_t daysOfMonth(std::int64_t year, int month) const;
};

} // namespace Tessel
