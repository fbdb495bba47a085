#include "Tessel/Platform/Foundation/Time/ZoneDatabase.h"

#include "Tessel/Platform/Foundation/Base/Limits.h"
#include "Tessel/Platform/Foundation/Files/WholeFile.h"
#include "Tessel/Platform/Foundation/Time/ZoneFile.h"

#include <algorithm>
#include <filesystem>
#include <functional>
#include <mutex>
#include <unordered_map>

namespace Tessel {

namespace {

namespace fs = std::filesystem;

constexpr const char* zoneDirectory = "/usr/share/zoneinfo";

/// Whether a file or directory of the database belongs to it only as another form of its zones.
bool isOtherForm(const fs::path& name)
{
    return name == "posix" || name == "right" || name == "localtime" || name == "posixrules";
}

struct Zone {
    std::once_flag isRead;
    std::shared_ptr<const ZoneRules> rules;
};

struct NameHash : std::hash<std::string_view> {
    using is_transparent = void;
};
using Zones = std::unordered_map<std::string, Zone, NameHash, std::equal_to<>>;

/// Whatever may be a zone. Tables have an extension, zones have none.
Zones listZones()
{
    Zones zones;
    std::error_code error;
    fs::recursive_directory_iterator entry(zoneDirectory, error);
    for (; !error && entry != fs::recursive_directory_iterator(); entry.increment(error)) {
        const auto& path = entry->path();
        if (entry.depth() == 0 && isOtherForm(path.filename())) {
            entry.disable_recursion_pending();
            continue;
        }
        auto name = path.lexically_relative(zoneDirectory).string();
        if (name.size() > Limits::zoneNameBytes || path.has_extension()) continue;
        std::error_code ignored;
        if (entry->is_regular_file(ignored)) zones.try_emplace(std::move(name));
    }
    return zones;
}

void read(const std::string& name, Zone& zone)
{
    const auto path = fs::path(zoneDirectory) / name;
    std::error_code error;
    const auto size = fs::file_size(path, error);
    if (error || size > Limits::zoneFileBytes) return;
    const auto bytes = readWholeFile(path);
    if (!bytes) return;
    auto rules = readZoneFile(*bytes);
    if (rules) zone.rules = std::make_shared<const ZoneRules>(std::move(*rules));
}

// Never freed: threads may still read dates while the process exits.
Zones& zones()
{
    static auto& zones = *new Zones(listZones());
    return zones;
}

} // namespace

std::shared_ptr<const ZoneRules> ZoneDatabase::rules(std::string_view name)
{
    const auto found = zones().find(name);
    if (found == zones().end()) return nullptr;
    std::call_once(found->second.isRead, [&] { read(found->first, found->second); });
    return found->second.rules;
}

std::vector<std::string> ZoneDatabase::names()
{
    std::vector<std::string> names;
    for (const auto& [name, zone] : zones())
        if (rules(name)) names.push_back(name);
    std::sort(names.begin(), names.end());
    return names;
}

} // namespace Tessel
