#pragma once

#include "Tessel/Session/Text/EventMoment.h"
#include "Tessel/Session/Text/LocalTime.h"

namespace Tessel {

/// A time of a text whose zone is found.
struct Moment {
    std::int64_t local; ///< milliseconds since 1970 as if it were UTC
    EventMoment::Kind kind;
    const TimeZone* zone; ///< of `zoned`; else of whoever asks, or UTC

    bool isDay() const { return kind == EventMoment::Kind::day; }
    bool isFixed() const
    {
        return kind == EventMoment::Kind::utc || kind == EventMoment::Kind::zoned;
    }

    std::int64_t time() const { return timeAt(local); }
    /// When its clock shows `local`.
    std::int64_t timeAt(std::int64_t local) const
    {
        return kind == EventMoment::Kind::utc ? local : momentOf(*zone, local);
    }
    std::int64_t localAt(std::int64_t time) const
    {
        return kind == EventMoment::Kind::utc ? time : localOf(*zone, time);
    }
    /// What its clock shows at `other`; what is without a zone is the same on every clock.
    std::int64_t localAs(const Moment& other) const
    {
        const bool isSameClock = kind == other.kind && zone == other.zone;
        return isSameClock || !isFixed() || !other.isFixed() ? other.local : localAt(other.time());
    }
};

inline std::int64_t dayOf(std::int64_t local)
{
    const auto rest = local % millisecondsOfDay;
    return local - (rest < 0 ? rest + millisecondsOfDay : rest);
}

} // namespace Tessel
