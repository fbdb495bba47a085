#pragma once

#include "Tessel/Session/Recurrence/Moment.h"

#include <functional>
#include <random>
#include <string>

namespace Tessel::Test {

/// A made calendar object and a range of time.
struct MadeSeries {
    std::string text; ///< lines end with LF, none is folded
    std::string rule;
    std::int64_t from;
    std::int64_t to;
    bool isPlain; ///< one component, and no EXDATE by day
};

/// Makes series with rules of every kind, always the same ones.
class SeriesMaker {
public:
    MadeSeries next();

private:
    int pick(int low, int high) { return low + int(random_() % unsigned(high - low + 1)); }
    bool chance(int percent) { return pick(1, 100) <= percent; }
    std::string some(int most, const std::function<std::string()>& value);
    std::string rule(int frequency);
    std::string inZone(const std::string& name, const std::string& tzid, std::int64_t local,
        const std::string& parameters = {}) const;
    std::string elsewhere(const std::string& name, std::int64_t local);

    std::mt19937 random_ {20240229};
    std::string zone_; ///< "day", "floating", "UTC" or a name
};

} // namespace Tessel::Test
