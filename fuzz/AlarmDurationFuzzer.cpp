#include "Tessel/CaldavLibrary/Extensions/AlarmText.h"
#include "fuzz/FuzzTarget.h"

#include <cmath>
#include <cstdint>
#include <optional>

namespace Tessel::Fuzz {

namespace {

/// What follows the grammar of a duration (RFC 5545, 3.3.6) up to nine digits a number, in seconds.
class Grammar {
public:
    explicit Grammar(std::string_view text)
        : rest_(text)
    {
    }

    std::optional<double> seconds()
    {
        const bool isNegative = rest_.starts_with('-');
        if (isNegative || rest_.starts_with('+')) rest_.remove_prefix(1);
        if (!take('P')) return std::nullopt;
        if (!part('W', 604'800)) {
            part('D', 86'400);
            if (take('T')) {
                const auto before = parts_;
                if (part('H', 3'600) && !rest_.empty() && !part('M', 60)) return std::nullopt;
                if (parts_ == before) part('M', 60);
                part('S', 1);
                if (parts_ == before) return std::nullopt;
            }
        }
        if (parts_ == 0 || !rest_.empty()) return std::nullopt;
        return isNegative ? -double(sum_) : double(sum_);
    }

private:
    bool take(char c)
    {
        if (!rest_.starts_with(c)) return false;
        rest_.remove_prefix(1);
        return true;
    }

    bool part(char unit, std::int64_t factor)
    {
        const auto digits = rest_.find_first_not_of("0123456789");
        if (digits == rest_.npos || digits == 0 || digits > 9 || rest_[digits] != unit)
            return false;
        sum_ += std::stoll(std::string(rest_.substr(0, digits))) * factor;
        rest_.remove_prefix(digits + 1);
        ++parts_;
        return true;
    }

    std::string_view rest_;
    std::int64_t sum_ = 0;
    int parts_ = 0;
};

/// A duration that follows the grammar is what it says; whatever else is read is finite, whole, no
/// more than a clock can count, and written so that it is read again.
const Target alarmDuration("alarm-duration", [](std::string_view input) {
    double seconds = 0;
    const bool isRead = endsOrStopsFor(
        {"an alarm duration holds no number: ", "an alarm duration has a number without a unit: "},
        [&] { seconds = AlarmText::duration(input); });
    const auto expected = Grammar(input).seconds();
    require(!expected || (isRead && seconds == *expected), "a duration is read as another");
    if (!isRead) return;
    require(std::abs(seconds) < 0x1p63 && seconds == std::trunc(seconds),
        "a duration is no whole number of seconds");

    // Beyond that the sum of the written parts is rounded.
    if (std::abs(seconds) >= 0x1p53) return;
    endsOrStopsFor({}, [&] {
        const auto written = AlarmText::VALARM({.relativeTriggerTime = seconds}, std::nullopt);
        const auto trigger = written->propertyValueForName("TRIGGER");
        require(trigger && AlarmText::duration(*trigger) == seconds, "what is written is another");
    });
});

} // namespace

} // namespace Tessel::Fuzz
