#include "Tessel/CaldavLibrary/Parsers/MRVTimeZoneParser.h"
#include "fuzz/FuzzTarget.h"

#include <cstdint>

namespace Tessel::Fuzz {

namespace {

/// Zones of any text answer for every time of two centuries; clocks show the local time that was
/// asked for, or a later one where they skip it.
const Target timeZone("time-zone", [](std::string_view input) {
    const auto zones = MRVTimeZoneParser(std::string(input)).parseTimeZones();
    if (!zones) return;
    for (const auto& [tzid, zone] : *zones) {
        require(zones->find(tzid) == zone, "a zone is not found by its own name");
        for (std::int64_t year = -70; year < 130; ++year) {
            // A quarter more each year, so that all seasons and hours are asked for.
            const auto local = year * (31'556'952'000 + 7'889'238'000);
            const auto date = zone.dateFromLocalMilliseconds(local);
            const auto offset = zone.secondsFromGMT(date);
            require(std::abs(offset) < 2 * 86'400, "a clock is days away from UTC");
            const auto shown = date.millisecondsSince1970() + offset * std::int64_t {1000};
            require(shown >= local && shown - local < 2 * 86'400'000, "a clock shows another time");
        }
    }
});

} // namespace

} // namespace Tessel::Fuzz
