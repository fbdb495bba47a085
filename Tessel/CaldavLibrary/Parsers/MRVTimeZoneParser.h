#pragma once

#include "Tessel/Platform/Foundation/Base/Export.h"
#include "Tessel/Platform/Foundation/Time/TimeZone.h"
#include "Tessel/icalendar/CGICalendar.h"

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

namespace Tessel {

/// Reads the zones of an iCalendar text (RFC 5545, 3.6.5). A TZID that is an identifier of the
/// time-zone database gives that zone, whatever the component says; else a Windows zone name gives
/// the zone for it; else the component's own rules are read; else a TZID that ends in an
/// identifier, as in "/example.org/20240101/Europe/Berlin", gives that zone. A TZID in quotes, or
/// folded over lines, is the name without them: real producers write both.
class TESSEL_EXPORT MRVTimeZoneParser {
public:
    /// Zones by TZID, in the order of the text. A repeated TZID keeps its first place and gets its
    /// last zone.
    class TESSEL_EXPORT Zones {
    public:
        using Zone = std::pair<std::string, TimeZone>; ///< TZID without quotes, zone

        ///@{
        /// As of a vector of `Zone`.
        bool empty() const { return zones_.empty(); }
        std::size_t size() const { return zones_.size(); }
        auto begin() const { return zones_.begin(); }
        auto end() const { return zones_.end(); }
        ///@}

        /// The zone of a TZID as a property's parameter has it, which may be in quotes or folded;
        /// none when there is none.
        std::optional<TimeZone> find(std::string_view tzid) const;
        /// Replaces the zone of that TZID, or appends it.
        void set(std::string tzid, TimeZone zone);

    private:
        std::vector<Zone> zones_;
        std::unordered_map<std::string, std::size_t> places_;
    };

    std::string icsString; ///< the iCalendar text that is read

    explicit MRVTimeZoneParser(std::string icsString); ///< reads nothing yet

    /// The zones of every VTIMEZONE in `icsString`; none when no zone can be read.
    std::optional<Zones> parseTimeZones() const;

    /// The zones of every VTIMEZONE in a calendar that is parsed already.
    static Zones timeZones(const CGICalendar& calendar);
};

} // namespace Tessel
