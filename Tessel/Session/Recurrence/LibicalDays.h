#pragma once

#include "Tessel/Session/Recurrence/RuleText.h"
#include "Tessel/Session/Recurrence/TimeSource.h"

#include <bitset>
#include <memory>

namespace Tessel {

/// The times of a rule as libical's iterator gives them.
class LibicalDays final : public TimeSource {
public:
    /// `mayJump`: those before `from` may be left out. What lies behind `to` may be, too.
    LibicalDays(const icalrecurrencetype& rule, std::int64_t start, bool isDay, std::int64_t from,
        std::int64_t to, bool mayJump);

    std::optional<std::int64_t> next() override;

private:
    struct Free {
        void operator()(icalrecur_iterator* iterator) const { icalrecur_iterator_free(iterator); }
    };
    std::unique_ptr<icalrecur_iterator, Free> iterator_;
    std::optional<std::int64_t> last_;
    std::bitset<13> months_; ///< empty where libical itself looks at BYMONTH
    std::size_t steps_ = 0;
    // INTERVAL, where it is counted here: of how many units from the first one is taken.
    std::int64_t every_ = 1;
    std::int64_t first_ = 0;
    std::int64_t unit_ = 1;
};

} // namespace Tessel
