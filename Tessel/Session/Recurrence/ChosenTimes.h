#pragma once

#include "Tessel/Session/Recurrence/LibicalDays.h"

#include <vector>

namespace Tessel {

/// The times that BYSETPOS chooses, of a rule that does not repeat within the day. libical 3.0
/// counts days alone, and not those of weeks; it is asked for all of them.
class ChosenTimes final : public TimeSource {
public:
    ChosenTimes(const icalrecurrencetype& rule, std::int64_t start, bool isDay, std::int64_t from,
        std::int64_t to, bool mayJump);

    std::optional<std::int64_t> next() override;

private:
    /// When the day, week, month or year of a time begins.
    std::int64_t periodOf(std::int64_t time) const;
    icalrecurrencetype wholeRule(std::int64_t start, bool isDay) const;

    const icalrecurrencetype& rule_;
    LibicalDays all_;
    std::optional<std::int64_t> ahead_; ///< the first of the next period
    std::vector<std::int64_t> chosen_;
    std::size_t position_ = 0;
};

} // namespace Tessel
