#include "Tessel/Session/Text/EventDuration.h"

namespace Tessel {

using namespace std::chrono;

std::optional<EventDuration> EventDuration::read(std::string_view value)
{
    constexpr std::int64_t most = std::int64_t {10'000} * 366 * 86'400;
    const bool isNegative = value.starts_with('-');
    if (isNegative || value.starts_with('+')) value.remove_prefix(1);
    if (!value.starts_with('P') && !value.starts_with('p')) return std::nullopt;
    value.remove_prefix(1);

    EventDuration duration;
    bool isTime = false;
    bool hasNumber = false;
    bool hasPart = false;
    std::int64_t number = 0;
    for (const char c : value) {
        if (c >= '0' && c <= '9') {
            number = 10 * number + (c - '0');
            hasNumber = true;
            if (number > most) return std::nullopt;
            continue;
        }
        if (c == 'T' || c == 't') {
            if (isTime || hasNumber) return std::nullopt;
            isTime = true;
            continue;
        }
        if (!hasNumber) return std::nullopt;
        const char unit = static_cast<char>(c & ~0x20);
        if (unit == 'W' && !isTime)
            duration.days += std::chrono::days(7 * number);
        else if (unit == 'D' && !isTime)
            duration.days += std::chrono::days(number);
        else if (unit == 'H' && isTime)
            duration.time += seconds(3600 * number);
        else if (unit == 'M' && isTime)
            duration.time += seconds(60 * number);
        else if (unit == 'S' && isTime)
            duration.time += seconds(number);
        else
            return std::nullopt;
        // Before the next part is added, so that nothing overflows.
        if (duration.days.count() > most / 86'400 || duration.time.count() > most)
            return std::nullopt;
        number = 0;
        hasNumber = false;
        hasPart = true;
    }
    if (!hasPart || hasNumber) return std::nullopt;
    if (isNegative) duration = {-duration.days, -duration.time};
    return duration;
}

std::string EventDuration::value() const
{
    const auto sum = total();
    auto rest = abs(time);
    std::string text = sum < seconds(0) ? "-P" : "P";
    const auto wholeDays = abs(days).count();
    if (wholeDays != 0 && wholeDays % 7 == 0 && rest == seconds(0))
        return text + std::to_string(wholeDays / 7) + "W";
    if (wholeDays != 0) text += std::to_string(wholeDays) + "D";
    if (rest == seconds(0)) return wholeDays != 0 ? text : text + "T0S";
    text += 'T';
    const auto append = [&](auto unit, char letter) {
        const auto count = rest / unit;
        rest %= unit;
        if (count != 0) text += std::to_string(count) + letter;
    };
    append(hours(1), 'H');
    append(minutes(1), 'M');
    append(seconds(1), 'S');
    return text;
}

} // namespace Tessel
