#include "Tessel/Platform/Foundation/Time/TimeZone.h"

#include "Tessel/Platform/Foundation/Base/Limits.h"
#include "Tessel/Platform/Foundation/Time/VTimeZoneText.h"

#include <algorithm>
#include <mutex>
#include <shared_mutex>
#include <unordered_map>

#include <unicode/basictz.h>
#include <unicode/unistr.h>
#include <unicode/vtzone.h>

namespace Tessel {

namespace {

/// What ICU's calendars can represent; moments beyond it are treated as these.
constexpr std::int64_t earliestMilliseconds = -184'303'902'528'000'000;
constexpr std::int64_t latestMilliseconds = 183'882'168'921'600'000;

UDate icuDate(std::int64_t milliseconds)
{
    return static_cast<UDate>(std::clamp(milliseconds, earliestMilliseconds, latestMilliseconds));
}

icu::UnicodeString icuText(std::string_view text)
{
    return icu::UnicodeString::fromUTF8(
        icu::StringPiece(text.data(), static_cast<int32_t>(text.size())));
}

std::unique_ptr<const icu::BasicTimeZone> basicTimeZone(std::unique_ptr<icu::TimeZone> zone)
{
    auto* const basic = dynamic_cast<icu::BasicTimeZone*>(zone.get());
    if (!basic) return nullptr;
    zone.release();
    return std::unique_ptr<const icu::BasicTimeZone>(basic);
}

/// Whether the text can be the name of a zone; ICU takes it for a C string in places.
bool isZoneName(std::string_view text)
{
    return text.size() <= Limits::zoneNameBytes
        && std::all_of(text.begin(), text.end(), [](char c) { return c >= ' ' && c < 0x7F; });
}

template <class Rules> class ZoneCache {
public:
    std::shared_ptr<const Rules> find(std::string_view name) const
    {
        const std::shared_lock lock(mutex_);
        const auto found = zones_.find(name);
        return found == zones_.end() ? nullptr : found->second;
    }

    std::shared_ptr<const Rules> insert(std::string_view name, std::shared_ptr<const Rules> rules)
    {
        const std::unique_lock lock(mutex_);
        return zones_.try_emplace(std::string(name), std::move(rules)).first->second;
    }

private:
    struct Hash : std::hash<std::string_view> {
        using is_transparent = void;
    };

    mutable std::shared_mutex mutex_;
    std::unordered_map<std::string, std::shared_ptr<const Rules>, Hash, std::equal_to<>> zones_;
};

} // namespace

struct TimeZone::Rules {
    std::string identifier;
    std::unique_ptr<const icu::BasicTimeZone> zone;

    static std::shared_ptr<const Rules> make(
        std::string_view identifier, std::unique_ptr<icu::TimeZone> zone)
    {
        auto basic = basicTimeZone(std::move(zone));
        if (!basic) return nullptr;
        return std::make_shared<const Rules>(Rules {std::string(identifier), std::move(basic)});
    }

    /// The rules of a zone that the time-zone database names. ICU by itself takes any text: it
    /// makes offsets out of "GMT+5" and UTC out of what it does not know.
    static std::shared_ptr<const Rules> makeKnown(std::string_view identifier)
    {
        if (identifier == UCAL_UNKNOWN_ZONE_ID) return nullptr;
        const auto name = icuText(identifier);
        icu::UnicodeString canonical;
        UBool isSystemZone = false;
        UErrorCode status = U_ZERO_ERROR;
        icu::TimeZone::getCanonicalID(name, canonical, isSystemZone, status);
        if (U_FAILURE(status) || !isSystemZone) return nullptr;
        return make(
            identifier, std::unique_ptr<icu::TimeZone>(icu::TimeZone::createTimeZone(name)));
    }

    static std::shared_ptr<const Rules> makeWindows(std::string_view windowsName)
    {
        icu::UnicodeString name;
        UErrorCode status = U_ZERO_ERROR;
        icu::TimeZone::getIDForWindowsID(icuText(windowsName), nullptr, name, status);
        if (U_FAILURE(status) || name.isEmpty()) return nullptr;
        std::string identifier;
        return makeKnown(name.toUTF8String(identifier));
    }

    /// The rules that `make` finds for `name`, made once. Only names that have rules are kept, so
    /// what the platform knows bounds the memory.
    static std::shared_ptr<const Rules> shared(std::string_view name,
        std::shared_ptr<const Rules> (*make)(std::string_view), ZoneCache<Rules>& cache)
    {
        if (!isZoneName(name)) return nullptr;
        if (auto rules = cache.find(name)) return rules;
        auto rules = make(name);
        return rules ? cache.insert(name, std::move(rules)) : nullptr;
    }

    // Never freed: threads may still read dates while the process exits.
    static std::shared_ptr<const Rules> known(std::string_view identifier)
    {
        static auto& cache = *new ZoneCache<Rules>;
        return shared(identifier, makeKnown, cache);
    }
    static std::shared_ptr<const Rules> windows(std::string_view name)
    {
        static auto& cache = *new ZoneCache<Rules>;
        return shared(name, makeWindows, cache);
    }
};

TimeZone::TimeZone(std::shared_ptr<const Rules> rules)
    : rules_(std::move(rules))
{
}

const TimeZone& TimeZone::UTC()
{
    static const auto& utc = *new TimeZone(
        Rules::make("UTC", std::unique_ptr<icu::TimeZone>(icu::TimeZone::getGMT()->clone())));
    return utc;
}

TimeZone TimeZone::local()
{
    std::unique_ptr<icu::TimeZone> zone(icu::TimeZone::createDefault());
    icu::UnicodeString name;
    std::string identifier;
    zone->getID(name).toUTF8String(identifier);
    if (identifier == UTC().identifier()) return UTC();
    if (auto rules = Rules::known(identifier)) return TimeZone(std::move(rules));
    if (auto rules = Rules::make(identifier, std::move(zone))) return TimeZone(std::move(rules));
    return UTC();
}

std::optional<TimeZone> TimeZone::withIdentifier(std::string_view identifier)
{
    if (identifier == UTC().identifier()) return UTC();
    if (auto rules = Rules::known(identifier)) return TimeZone(std::move(rules));
    return std::nullopt;
}

std::optional<TimeZone> TimeZone::withWindowsName(std::string_view name)
{
    if (auto rules = Rules::windows(name)) return TimeZone(std::move(rules));
    return std::nullopt;
}

std::optional<TimeZone> TimeZone::fromVTimeZone(std::string_view text, std::string_view identifier)
{
    const auto rulesText = plainVTimeZoneText(text);
    if (!rulesText) return std::nullopt;

    UErrorCode status = U_ZERO_ERROR;
    std::unique_ptr<icu::TimeZone> zone(
        icu::VTimeZone::createVTimeZone(icuText(*rulesText), status));
    if (U_FAILURE(status) || !zone) return std::nullopt;
    if (auto rules = Rules::make(identifier, std::move(zone))) return TimeZone(std::move(rules));
    return std::nullopt;
}

const std::string& TimeZone::identifier() const
{
    return rules_->identifier;
}

int TimeZone::secondsFromGMT(const Date& date) const
{
    int32_t standard = 0;
    int32_t daylight = 0;
    UErrorCode status = U_ZERO_ERROR;
    rules_->zone->getOffset(
        icuDate(date.millisecondsSince1970()), false, standard, daylight, status);
    return (standard + daylight) / 1000;
}

Date TimeZone::dateFromLocalMilliseconds(std::int64_t localMilliseconds) const
{
    const auto local = std::clamp(localMilliseconds, earliestMilliseconds, latestMilliseconds);
    int32_t standard = 0;
    int32_t daylight = 0;
    UErrorCode status = U_ZERO_ERROR;
    rules_->zone->getOffsetFromLocal(
        icuDate(local), UCAL_TZ_LOCAL_FORMER, UCAL_TZ_LOCAL_LATTER, standard, daylight, status);
    return Date::fromMillisecondsSince1970(local - standard - daylight);
}

bool operator==(const TimeZone& a, const TimeZone& b)
{
    if (a.rules_ == b.rules_) return true;
    return a.identifier() == b.identifier() && *a.rules_->zone == *b.rules_->zone;
}

} // namespace Tessel
