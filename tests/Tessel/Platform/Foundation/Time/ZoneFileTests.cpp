#include "Tessel/Platform/Foundation/Time/ZoneFile.h"

#include "Tessel/Platform/Foundation/Files/WholeFile.h"

#include <gtest/gtest.h>

#include <random>

// What the system's files say is compared with the C library in ZoneDataTests.

using namespace Tessel;

namespace {

struct Parts {
    char version = '2';
    std::vector<std::int64_t> times {0, 1'000'000'000};
    std::string indices {0, 1};
    std::vector<std::int32_t> offsets {0, 3600};
    std::uint32_t leapSeconds = 0;
    std::string footer = "\nCET-1CEST,M3.5.0,M10.5.0/3\n";
};

std::string number(std::int64_t value, int size)
{
    std::string bytes;
    for (int shift = 8 * (size - 1); shift >= 0; shift -= 8)
        bytes += static_cast<char>(value >> shift & 0xFF);
    return bytes;
}

/// A file as small as the format allows: nothing is in its old part.
std::string file(const Parts& parts)
{
    const auto header = [&](std::size_t times, std::size_t types, std::uint32_t leapSeconds) {
        std::string bytes = "TZif" + std::string(1, parts.version) + std::string(15, '\0');
        for (const std::size_t count : {std::size_t(0), std::size_t(0), std::size_t(leapSeconds),
                 times, types, std::size_t(4)})
            bytes += number(static_cast<std::int64_t>(count), 4);
        return bytes;
    };
    auto bytes = header(0, 0, 0) + "LMT" + '\0';
    bytes += header(parts.times.size(), parts.offsets.size(), parts.leapSeconds);
    for (const auto time : parts.times)
        bytes += number(time, 8);
    bytes += parts.indices;
    for (const auto offset : parts.offsets)
        bytes += number(offset, 4) + std::string(2, '\0');
    return bytes + "LMT" + '\0' + std::string(12 * parts.leapSeconds, '\0') + parts.footer;
}

} // namespace

TEST(ZoneFile, FollowsItsRuleAfterTheListedChanges)
{
    const auto rules = readZoneFile(file({}));
    ASSERT_TRUE(rules.has_value());
    EXPECT_EQ(rules->offsetAt(-1), 0);
    EXPECT_EQ(rules->offsetAt(999'999'999), 0) << "the rule's summers begin after the list";
    EXPECT_EQ(rules->offsetAt(1'000'000'000), 3600);
    EXPECT_EQ(rules->offsetAt(1'719'792'000), 7200); // 2024-07-01
    EXPECT_EQ(rules->offsetAt(2'540'246'400), 7200); // 2050-07-01
    EXPECT_EQ(rules->offsetAt(2'524'608'000), 3600); // 2050-01-01
    EXPECT_EQ(rules->offsetAt(std::int64_t(1) << 57), rules->offsetAt(std::int64_t(1) << 57));
}

TEST(ZoneFile, MalformedFilesAreNone)
{
    const auto far = std::numeric_limits<std::int64_t>::max();
    const std::pair<const char*, Parts> cases[] = {
        {"a file of the first version", {.version = '\0'}},
        {"leap seconds", {.leapSeconds = 1}},
        {"times out of order", {.times = {5, 4}}},
        {"a time beyond time", {.times = {0, far}}},
        {"a time before time", {.times = {-far, 0}}},
        {"a type that is not there", {.indices = {0, 2}}},
        {"no types", {.times = {}, .indices = "", .offsets = {}}},
        {"an offset of a year", {.offsets = {0, 365 * 86'400}}},
        {"the least offset", {.offsets = {0, std::numeric_limits<std::int32_t>::min()}}},
        {"no footer", {.footer = ""}},
        {"an open footer", {.footer = "\nCET-1"}},
        {"an empty footer", {.footer = "\n\n"}},
        {"an unreadable footer", {.footer = "\nCET-1CEST\n"}},
    };
    for (const auto& [name, parts] : cases)
        EXPECT_FALSE(readZoneFile(file(parts)).has_value()) << name;
}

TEST(ZoneFile, SurvivesDamage)
{
    const auto whole = readWholeFile("/usr/share/zoneinfo/Europe/Berlin").value();
    ASSERT_TRUE(readZoneFile(whole).has_value());
    for (std::size_t size = 0; size < whole.size(); ++size)
        ASSERT_FALSE(readZoneFile(std::string_view(whole).substr(0, size)).has_value()) << size;

    std::mt19937 random(20240102);
    for (int round = 0; round < 3000; ++round) {
        auto bytes = round % 2 == 0 ? whole : file({});
        for (int flips = 1 + round % 3; flips > 0; --flips)
            bytes[random() % bytes.size()] = static_cast<char>(random());
        const auto rules = readZoneFile(bytes);
        if (!rules) continue;
        for (std::int64_t year = -3000; year < 8000; year += 1111) {
            EXPECT_LE(std::abs(rules->offsetAt(year * 31'556'952)), 26 * 3600);
            rules->offsetAtLocal(year * 31'556'952);
        }
    }
}
