#pragma once

#include "Tessel/Platform/Foundation/Time/YearlyRule.h"

#include <cstdint>
#include <vector>

namespace Tessel {

/// When clocks of a zone were and will be changed: at single moments, and by rules that may go on
/// for ever. Immutable; all times are seconds since 1970.
class ZoneRules {
public:
    struct Onset {
        std::int64_t time; ///< in UTC
        int offset; ///< from UTC, east positive
        bool isDaylight;

        friend bool operator==(const Onset&, const Onset&) = default;
    };

    /// `onsets` may have any order. Of changes that fall together the last of its list holds, a
    /// rule rather than a single onset.
    ZoneRules(int initialOffset, std::vector<Onset> onsets, std::vector<YearlyRule> rules);

    int offsetAt(std::int64_t time) const;
    /// The offset with which a local time is to be read. A time that clocks skip has the offset
    /// before the change, one that they show twice the offset after it.
    int offsetAtLocal(std::int64_t localTime) const;

    int initialOffset() const { return initialOffset_; }
    /// Ascending; with the last change of every rule that ends.
    const std::vector<Onset>& onsets() const { return onsets_; }
    const std::vector<YearlyRule>& rules() const { return rules_; }

    friend bool operator==(const ZoneRules&, const ZoneRules&) = default;

private:
    int initialOffset_;
    std::vector<Onset> onsets_;
    /// For each onset the earliest local time that it or a later one rules.
    std::vector<std::int64_t> localOnsets_;
    std::vector<YearlyRule> rules_;
};

} // namespace Tessel
