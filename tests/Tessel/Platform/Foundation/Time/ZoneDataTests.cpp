#include "Tessel/Platform/Foundation/Time/PosixZone.h"
#include "Tessel/Platform/Foundation/Time/TimeZone.h"
#include "Tessel/Platform/Foundation/Time/ZoneDatabase.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <ctime>

// The C library reads the same database, and its rules, by itself. It has one zone for the whole
// process, so these tests have a program of their own.

using namespace Tessel;

namespace {

constexpr std::int64_t day = 86'400;
constexpr std::int64_t year2038 = 2'145'916'800;
constexpr std::int64_t year2100 = 4'102'444'800;

/// Makes `zone`, a name or a rule, the zone of the C library.
void useForLibrary(const std::string& zone)
{
    setenv("TZ", zone.c_str(), 1);
    tzset();
}

int offsetOfLibrary(std::int64_t time)
{
    const auto moment = static_cast<std::time_t>(time);
    std::tm local {};
    localtime_r(&moment, &local);
    return static_cast<int>(local.tm_gmtoff);
}

/// The first second from which the offset is that of `after`.
std::int64_t changeBetween(std::int64_t before, std::int64_t after)
{
    const int offset = offsetOfLibrary(before);
    while (after - before > 1) {
        const auto middle = before + (after - before) / 2;
        (offsetOfLibrary(middle) == offset ? before : after) = middle;
    }
    return after;
}

/// By definition: a time that clocks skip is read by the offset before, one that they show twice by
/// the offset after.
std::int64_t readByLibrary(std::int64_t local, int before, int after)
{
    return offsetOfLibrary(local - after) == after ? local - after : local - before;
}

void expectChangeAsInLibrary(const ZoneRules& rules, std::int64_t change)
{
    const int before = offsetOfLibrary(change - 1);
    const int after = offsetOfLibrary(change);
    ASSERT_EQ(rules.offsetAt(change - 1), before) << change;
    ASSERT_EQ(rules.offsetAt(change), after) << change;
    for (int distance = -3 * 3600; distance <= 3 * 3600; distance += 900) {
        for (const auto local :
            {change + before + distance - 1, change + before + distance, change + after + distance})
            ASSERT_EQ(local - rules.offsetAtLocal(local), readByLibrary(local, before, after))
                << change << " " << distance;
    }
}

/// Compares every few days, and every change to the second.
void expectAsInLibrary(const ZoneRules& rules, std::int64_t from, std::int64_t to)
{
    constexpr auto step = 4 * day;
    int before = offsetOfLibrary(from);
    for (auto time = from; time < to; time += step) {
        const int offset = offsetOfLibrary(time);
        ASSERT_EQ(rules.offsetAt(time), offset) << time;
        if (offset != before) expectChangeAsInLibrary(rules, changeBetween(time - step, time));
        if (testing::Test::HasFatalFailure()) return;
        before = offset;
    }
}

} // namespace

TEST(ZoneData, EveryZoneIsThatOfTheSystem)
{
    const auto names = ZoneDatabase::names();
    EXPECT_GT(names.size(), 400u);
    for (const auto& name : names) {
        SCOPED_TRACE(name);
        useForLibrary(":" + name);
        expectAsInLibrary(*ZoneDatabase::rules(name), 0, year2038);
    }
}

TEST(ZoneData, RulesHoldForEver)
{
    for (const auto* const name :
        {"Europe/Berlin", "America/New_York", "Australia/Lord_Howe", "Africa/Cairo", "Asia/Gaza",
            "America/Nuuk", "Europe/Dublin", "Pacific/Chatham", "America/Santiago", "Asia/Tokyo"}) {
        SCOPED_TRACE(name);
        useForLibrary(std::string(":") + name);
        const auto rules = ZoneDatabase::rules(name);
        ASSERT_TRUE(rules);
        expectAsInLibrary(*rules, year2038 - 400 * day, year2100);
    }
}

TEST(ZoneData, OldTimesAreThoseOfTheSystemToo)
{
    for (const auto* const name : {"Europe/Berlin", "America/New_York", "Asia/Kathmandu"}) {
        SCOPED_TRACE(name);
        useForLibrary(std::string(":") + name);
        expectAsInLibrary(*ZoneDatabase::rules(name), -100'000 * day, 0);
    }
}

TEST(ZoneData, SummerTimeMayLastAllTheYear)
{
    // The C library counts years in UTC and errs for some hours at New Year.
    const auto zone = readPosixZone("XXX3EDT4,0/0,J365/23");
    const ZoneRules rules(zone->offset, {}, zone->rules);
    for (std::int64_t time = 0; time < year2100; time += 3600 * 5) {
        ASSERT_EQ(rules.offsetAt(time), -4 * 3600) << time;
        ASSERT_EQ(rules.offsetAtLocal(time), -4 * 3600) << time;
    }
}

TEST(ZoneData, ReadsTheRulesThatEndZoneFiles)
{
    for (const auto* const text : {"CET-1CEST,M3.5.0,M10.5.0/3",
             "<+1030>-10:30<+11>-11,M10.1.0,M4.1.0", "IST-1GMT0,M10.5.0,M3.5.0/1",
             "<-02>2<-01>,M3.5.0/-1,M10.5.0/0", "UTC0", "<-00>0", "EET-2EEST,M3.4.4/50,M10.4.4/50",
             "<+0330>-3:30<+0430>,J79/24,J263/24", "AAA+4BBB,J60/2:30:15,300", "<-0445>4:45:30"}) {
        SCOPED_TRACE(text);
        const auto zone = readPosixZone(text);
        ASSERT_TRUE(zone.has_value());
        useForLibrary(text);
        expectAsInLibrary(ZoneRules(zone->offset, {}, zone->rules), 10 * 365 * day, year2100);
    }
    for (const auto* const text : {"", "CET", "-1", "CET-1CEST", "CET-1CEST,M3.5.0", "CET-25",
             "CET-1CEST,M13.5.0,M10.5.0", "CET-1CEST,M3.6.0,M10.5.0", "CET-1CEST,M3.5.7,M10.5.0",
             "CET-1CEST,J0,J365", "CET-1CEST,J1,J366", "CET-1CEST,M3.5.0,M10.5.0/168", "<CET-1",
             "CET-1CEST,M3.5.0,M10.5.0 ", "CET-1CEST,M3.5.0/2:60,M10.5.0", "CET-99999999999"})
        EXPECT_FALSE(readPosixZone(text).has_value()) << text;
}
