#pragma once

#include "Tessel/Session/Recurrence/LibicalDays.h"

#include <bitset>
#include <vector>

namespace Tessel {

/// The times of an HOURLY, MINUTELY or SECONDLY rule. libical would step through every second of
/// centuries to find one that fits; it is asked for the days alone.
class TimesWithinDays final : public TimeSource {
public:
    TimesWithinDays(
        const RuleText& rule, std::int64_t start, std::int64_t from, std::int64_t to, bool mayJump);

    std::optional<std::int64_t> next() override;

private:
    std::optional<std::int64_t> nextDay();
    void fill(std::int64_t day);
    bool isPeriod(std::int64_t time, std::int64_t length) const;
    /// Takes over what BYSETPOS chooses of the times of one period.
    void choose();

    const icalrecurrencetype& rule_;
    std::int64_t interval_;
    std::int64_t start_;
    std::int64_t last_;
    std::int64_t day_;
    std::unique_ptr<LibicalDays> days_; ///< null where every day is one
    std::bitset<24> hours_;
    std::bitset<60> minutes_;
    std::bitset<60> seconds_;
    std::vector<std::int64_t> period_;
    std::vector<std::int64_t> times_;
    std::size_t position_ = 0;
    std::size_t steps_ = 0;
};

} // namespace Tessel
