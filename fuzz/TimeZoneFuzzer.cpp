#include "Tessel/CaldavLibrary/Parsers/MRVTimeZoneParser.h"

#include <cstddef>
#include <cstdint>
#include <string>

/// Reads zones of any text and asks them for times of two centuries.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const Tessel::MRVTimeZoneParser parser(std::string(reinterpret_cast<const char*>(data), size));
    const auto zones = parser.parseTimeZones();
    if (!zones) return 0;
    for (const auto& [identifier, zone] : *zones) {
        for (std::int64_t year = -70; year < 130; ++year) {
            const auto milliseconds = year * 31'556'952'000;
            zone.secondsFromGMT(Tessel::Date::fromMillisecondsSince1970(milliseconds));
            zone.dateFromLocalMilliseconds(milliseconds);
        }
    }
    return 0;
}
