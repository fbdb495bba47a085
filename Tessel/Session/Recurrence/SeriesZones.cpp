#include "Tessel/Session/Recurrence/SeriesZones.h"

#include "Tessel/Platform/Foundation/Base/Limits.h"

#include <mutex>
#include <unordered_map>

namespace Tessel {

namespace {

/// Zones by their VTIMEZONE, of which a server's texts have a few, all alike. It is emptied when it
/// is full: texts that each have a definition of their own gain nothing from it anyway.
class SharedDefinitions {
public:
    std::optional<TimeZone> find(const std::string& definition)
    {
        const std::lock_guard lock(mutex_);
        const auto found = zones_.find(definition);
        return found == zones_.end() ? std::nullopt : std::optional(found->second);
    }

    void add(std::string definition, const TimeZone& zone)
    {
        const std::lock_guard lock(mutex_);
        if (zones_.size() >= Limits::sharedZones) zones_.clear();
        zones_.insert_or_assign(std::move(definition), zone);
    }

private:
    std::mutex mutex_;
    std::unordered_map<std::string, TimeZone> zones_;
};

SharedDefinitions& shared()
{
    static SharedDefinitions shared;
    return shared;
}

} // namespace

const TimeZone& SeriesZones::zone(const std::string& tzid)
{
    for (const auto& known : known_)
        if (known.tzid == tzid) return known.zone;

    const auto definition = zones_.definition(tzid);
    std::string text(definition ? definition->raw() : std::string_view());
    const bool isShared = !text.empty() && text.size() <= Limits::zoneBytes;
    auto zone = isShared ? shared().find(text) : std::nullopt;
    if (!zone) {
        zone = zones_.zone(tzid);
        if (zone && isShared) shared().add(text, *zone);
    }
    return known_.emplace_back(Known {tzid, zone ? *zone : local_}).zone;
}

} // namespace Tessel
