#include "Tessel/Platform/Foundation/Time/TimeZone.h"

#include "Tessel/Platform/Foundation/Base/Limits.h"
#include "Tessel/Platform/Foundation/Time/VTimeZoneReader.h"
#include "Tessel/Platform/Foundation/Time/VTimeZoneWriter.h"
#include "Tessel/Platform/Foundation/Time/ZoneDatabase.h"

#include <algorithm>
#include <mutex>
#include <shared_mutex>
#include <unordered_map>

#include <unicode/timezone.h>
#include <unicode/unistr.h>

namespace Tessel {

namespace {

/// What ICU's calendars can represent; moments beyond it are treated as these.
constexpr std::int64_t earliestMilliseconds = -184'303'902'528'000'000;
constexpr std::int64_t latestMilliseconds = 183'882'168'921'600'000;
constexpr std::int64_t millisecondsPerSecond = 1000;

std::int64_t wholeSeconds(std::int64_t milliseconds)
{
    const auto known = std::clamp(milliseconds, earliestMilliseconds, latestMilliseconds);
    return known / millisecondsPerSecond - (known % millisecondsPerSecond < 0);
}

std::string utf8(const icu::UnicodeString& text)
{
    std::string result;
    return text.toUTF8String(result);
}

/// The database's name for a Windows zone, or none. ICU may tell an old one that is not installed,
/// such as "Asia/Calcutta": any name of the same zone serves then.
std::optional<std::string> nameForWindows(std::string_view windowsName)
{
    const auto text = icu::UnicodeString::fromUTF8(
        icu::StringPiece(windowsName.data(), static_cast<int32_t>(windowsName.size())));
    icu::UnicodeString name;
    UErrorCode status = U_ZERO_ERROR;
    icu::TimeZone::getIDForWindowsID(text, nullptr, name, status);
    if (U_FAILURE(status) || name.isEmpty()) return std::nullopt;
    if (ZoneDatabase::rules(utf8(name))) return utf8(name);

    const auto count = icu::TimeZone::countEquivalentIDs(name);
    for (int32_t i = 0; i < count; ++i) {
        auto other = utf8(icu::TimeZone::getEquivalentID(name, i));
        if (ZoneDatabase::rules(other)) return other;
    }
    return std::nullopt;
}

} // namespace

struct TimeZone::Rules {
    std::string identifier;
    std::shared_ptr<const ZoneRules> offsets;

    static std::shared_ptr<const Rules> make(
        std::string_view identifier, std::shared_ptr<const ZoneRules> offsets)
    {
        if (!offsets) return nullptr;
        return std::make_shared<const Rules>(Rules {std::string(identifier), std::move(offsets)});
    }

    static std::shared_ptr<const Rules> fixed(std::string_view identifier, int offset)
    {
        return make(identifier,
            std::make_shared<const ZoneRules>(
                offset, std::vector<ZoneRules::Onset>(), std::vector<YearlyRule>()));
    }
};

namespace {

/// Zones that were looked up by a name, made once. Only names that have a zone are kept, so their
/// number is bounded.
class ZoneCache {
public:
    template <class Make> std::optional<TimeZone> zone(std::string_view name, Make make)
    {
        if (name.size() > Limits::zoneNameBytes) return std::nullopt;
        {
            const std::shared_lock lock(mutex_);
            const auto found = zones_.find(name);
            if (found != zones_.end()) return found->second;
        }
        std::optional<TimeZone> made = make(name);
        if (!made) return std::nullopt;
        const std::unique_lock lock(mutex_);
        return zones_.try_emplace(std::string(name), std::move(*made)).first->second;
    }

private:
    struct Hash : std::hash<std::string_view> {
        using is_transparent = void;
    };

    std::shared_mutex mutex_;
    std::unordered_map<std::string, TimeZone, Hash, std::equal_to<>> zones_;
};

} // namespace

TimeZone::TimeZone(std::shared_ptr<const Rules> rules)
    : rules_(std::move(rules))
{
}

// What is kept is never freed: threads may still read dates while the process exits.
const TimeZone& TimeZone::UTC()
{
    static const auto& utc = *new TimeZone(Rules::fixed("UTC", 0));
    return utc;
}

TimeZone TimeZone::local()
{
    const std::unique_ptr<icu::TimeZone> zone(icu::TimeZone::createDefault());
    if (!zone) return UTC();
    icu::UnicodeString name;
    const auto identifier = utf8(zone->getID(name));
    if (auto known = withIdentifier(identifier)) return *known;
    return TimeZone(Rules::fixed(identifier, zone->getRawOffset() / millisecondsPerSecond));
}

std::optional<TimeZone> TimeZone::withIdentifier(std::string_view identifier)
{
    if (identifier == UTC().identifier()) return UTC();
    static auto& cache = *new ZoneCache;
    return cache.zone(identifier, [](std::string_view name) -> std::optional<TimeZone> {
        auto rules = Rules::make(name, ZoneDatabase::rules(name));
        if (!rules) return std::nullopt;
        return TimeZone(std::move(rules));
    });
}

std::optional<TimeZone> TimeZone::withWindowsName(std::string_view name)
{
    static auto& cache = *new ZoneCache;
    return cache.zone(name, [](std::string_view name) -> std::optional<TimeZone> {
        const auto identifier = nameForWindows(name);
        if (!identifier) return std::nullopt;
        return withIdentifier(*identifier);
    });
}

std::optional<TimeZone> TimeZone::fromVTimeZone(std::string_view text, std::string_view identifier)
{
    auto offsets = readVTimeZone(text);
    if (!offsets) return std::nullopt;
    return TimeZone(
        Rules::make(identifier, std::make_shared<const ZoneRules>(std::move(*offsets))));
}

const std::string& TimeZone::identifier() const
{
    return rules_->identifier;
}

int TimeZone::secondsFromGMT(const Date& date) const
{
    return rules_->offsets->offsetAt(wholeSeconds(date.millisecondsSince1970()));
}

Date TimeZone::dateFromLocalMilliseconds(std::int64_t localMilliseconds) const
{
    const auto local = std::clamp(localMilliseconds, earliestMilliseconds, latestMilliseconds);
    const auto offset = rules_->offsets->offsetAtLocal(wholeSeconds(local));
    return Date::fromMillisecondsSince1970(local - offset * millisecondsPerSecond);
}

std::string TimeZone::vTimeZone(std::string_view tzid) const
{
    return writeVTimeZone(tzid.empty() ? identifier() : tzid, *rules_->offsets);
}

bool operator==(const TimeZone& a, const TimeZone& b)
{
    if (a.rules_ == b.rules_) return true;
    return a.identifier() == b.identifier() && *a.rules_->offsets == *b.rules_->offsets;
}

} // namespace Tessel
