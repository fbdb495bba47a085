#pragma once

#include "Tessel/Session/Text/TextZones.h"

#include <deque>

namespace Tessel {

/// The zones of one text. Definitions that many texts share are read once.
class SeriesZones {
public:
    /// `local` has to live as long.
    SeriesZones(const TextTree& tree, const TimeZone& local)
        : zones_(tree)
        , local_(local)
    {
    }

    /// `local` for a zone that nobody knows.
    const TimeZone& zone(const std::string& tzid);
    const TimeZone& local() const { return local_; }

private:
    struct Known {
        std::string tzid;
        TimeZone zone;
    };

    TextZones zones_;
    const TimeZone& local_;
    std::deque<Known> known_;
};

} // namespace Tessel
