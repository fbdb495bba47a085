#include "Tessel/Platform/Foundation/Time/ZoneFile.h"

#include "Tessel/Platform/Foundation/Time/PosixZone.h"

#include <algorithm>

namespace Tessel {

namespace {

/// Times beyond are as good as never; sums with them stay whole numbers.
constexpr std::int64_t mostSeconds = std::int64_t(1) << 60;
constexpr int mostOffset = 26 * 3600;
/// Between these times, 1900-01-01 and 2038-01-01, changes are listed, so that the dates of events
/// need a look-up only.
constexpr std::int64_t listedFrom = -2'208'988'800;
constexpr std::int64_t listedUntil = 2'145'916'800;

/// Takes big-endian numbers off the front; beyond the end it gives zeros and is not good.
class Bytes {
public:
    explicit Bytes(std::string_view bytes)
        : rest_(bytes)
    {
    }

    bool isGood() const { return good_; }
    std::string_view rest() const { return rest_; }

    std::string_view take(std::uint64_t size)
    {
        good_ = good_ && size <= rest_.size();
        if (!good_) return {};
        const auto taken = rest_.substr(0, static_cast<std::size_t>(size));
        rest_.remove_prefix(taken.size());
        return taken;
    }
    std::uint64_t number(std::size_t size)
    {
        std::uint64_t value = 0;
        for (const char byte : take(size))
            value = value << 8 | static_cast<unsigned char>(byte);
        return value;
    }

private:
    std::string_view rest_;
    bool good_ = true;
};

struct Header {
    char version;
    std::uint64_t utcIndicators, standardIndicators, leapSeconds, times, types, characters;

    /// None when there is no header.
    static std::optional<Header> take(Bytes& bytes)
    {
        if (bytes.take(4) != "TZif") return std::nullopt;
        Header header {};
        header.version = static_cast<char>(bytes.number(1));
        bytes.take(15);
        for (auto* const count : {&header.utcIndicators, &header.standardIndicators,
                 &header.leapSeconds, &header.times, &header.types, &header.characters})
            *count = bytes.number(4);
        return bytes.isGood() ? std::optional(header) : std::nullopt;
    }

    std::uint64_t dataSize(std::uint64_t timeSize) const
    {
        return times * (timeSize + 1) + types * 6 + characters + leapSeconds * (timeSize + 4)
            + standardIndicators + utcIndicators;
    }
};

struct LocalTimeType {
    int offset;
    bool isDaylight;
};

std::optional<std::vector<LocalTimeType>> takeTypes(Bytes& bytes, std::uint64_t count)
{
    std::vector<LocalTimeType> types;
    for (; count > 0 && bytes.isGood(); --count) {
        const auto offset = static_cast<std::int32_t>(bytes.number(4));
        if (offset < -mostOffset || offset > mostOffset) return std::nullopt;
        types.push_back({offset, bytes.number(1) != 0});
        bytes.take(1); // where its abbreviation is
    }
    if (!bytes.isGood() || types.empty()) return std::nullopt;
    return types;
}

/// The line between the two line feeds that end the file.
std::optional<PosixZone> takeFooter(Bytes& bytes)
{
    auto text = bytes.rest();
    if (text.size() < 2 || !text.starts_with('\n')) return std::nullopt;
    text.remove_prefix(1);
    const auto end = text.find('\n');
    if (end == text.npos) return std::nullopt;
    return readPosixZone(text.substr(0, end));
}

/// Lists what the rules change after `last`; they go on from there by themselves.
void list(std::vector<YearlyRule>& rules, std::int64_t last, std::vector<ZoneRules::Onset>& onsets)
{
    for (auto& rule : rules) {
        rule.first = std::max(last + 1, listedFrom) + rule.offsetFrom;
        auto next = rule.earliestOnset(rule.first);
        for (; next && *next - rule.offsetFrom < listedUntil; next = rule.earliestOnset(*next + 1))
            onsets.push_back({*next - rule.offsetFrom, rule.offsetTo, rule.isDaylight});
        rule.first = std::max(rule.first, listedUntil + rule.offsetFrom);
    }
}

} // namespace

std::optional<ZoneRules> readZoneFile(std::string_view text)
{
    Bytes bytes(text);
    const auto compatible = Header::take(bytes);
    if (!compatible || compatible->version < '2') return std::nullopt;
    bytes.take(compatible->dataSize(4));
    const auto header = Header::take(bytes);
    if (!header || header->leapSeconds != 0 || header->dataSize(8) > bytes.rest().size())
        return std::nullopt;

    Bytes times(bytes.take(header->times * 8));
    Bytes indices(bytes.take(header->times));
    const auto types = takeTypes(bytes, header->types);
    bytes.take(header->characters + header->standardIndicators + header->utcIndicators);
    auto footer = takeFooter(bytes);
    if (!types || !footer) return std::nullopt;

    std::vector<ZoneRules::Onset> onsets;
    auto last = -mostSeconds;
    for (std::uint64_t i = 0; i < header->times; ++i) {
        const auto time = static_cast<std::int64_t>(times.number(8));
        const auto type = indices.number(1);
        if (time <= last || time >= mostSeconds || type >= types->size()) return std::nullopt;
        onsets.push_back({time, (*types)[type].offset, (*types)[type].isDaylight});
        last = time;
    }
    list(footer->rules, last, onsets);
    return ZoneRules(types->front().offset, std::move(onsets), std::move(footer->rules));
}

} // namespace Tessel
