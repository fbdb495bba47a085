#include "Tessel/Session/Text/LocalTime.h"

namespace Tessel {

namespace {

std::int64_t offset(const TimeZone& zone, std::int64_t moment)
{
    return std::int64_t(zone.secondsFromGMT(Date::fromMillisecondsSince1970(moment))) * 1000;
}

} // namespace

std::int64_t momentOf(const TimeZone& zone, std::int64_t local)
{
    // A day before is earlier in every zone, and no zone changes its clocks twice in so short a
    // time.
    const auto before = offset(zone, local - millisecondsOfDay);
    const auto first = local - before;
    const auto after = offset(zone, first);
    if (after == before) return first;
    const auto second = local - after;
    return offset(zone, second) == after ? second : first;
}

std::int64_t localOf(const TimeZone& zone, std::int64_t moment)
{
    return moment + offset(zone, moment);
}

} // namespace Tessel
