#include "tests/Tessel/Session/Recurrence/SeriesMaker.h"

#include "Tessel/Session/Recurrence/RuleIterator.h"

#include <array>
#include <map>
#include <set>
#include <vector>

namespace Tessel::Test {

namespace {

constexpr std::array frequencies {
    "SECONDLY", "MINUTELY", "HOURLY", "DAILY", "WEEKLY", "MONTHLY", "YEARLY"};
constexpr std::array weekdays {"MO", "TU", "WE", "TH", "FR", "SA", "SU"};
constexpr std::array zones {"day", "floating", "UTC", "Europe/Berlin", "America/New_York",
    "Australia/Lord_Howe", "Asia/Kolkata", "Pacific/Apia", "America/Sao_Paulo"};
constexpr std::int64_t minute = 60'000;
constexpr std::int64_t newYear2016 = 1'451'606'400'000;

EventMoment momentOf(std::int64_t local, EventMoment::Kind kind)
{
    using namespace std::chrono;
    return {kind, floor<seconds>(local_time<milliseconds>(milliseconds(local))), {}};
}

EventMoment::Kind kindOf(const std::string& zone)
{
    using Kind = EventMoment::Kind;
    if (zone == "day") return Kind::day;
    if (zone == "floating") return Kind::floating;
    return zone == "UTC" ? Kind::utc : Kind::zoned;
}

const TimeZone& zoneOf(const std::string& name)
{
    static std::map<std::string, TimeZone> known;
    const auto zone = TimeZone::withIdentifier(name).value_or(TimeZone::UTC());
    return known.try_emplace(name, zone).first->second;
}

} // namespace

std::string SeriesMaker::some(int most, const std::function<std::string()>& value)
{
    std::set<std::string> values;
    for (int i = pick(1, most); i > 0; --i)
        values.insert(value());
    std::string list;
    for (const auto& each : values)
        list += (list.empty() ? "" : ",") + each;
    return list;
}

std::string SeriesMaker::rule(int frequency)
{
    enum { secondly, minutely, hourly, daily, weekly, monthly, yearly };
    std::string rule = std::string("FREQ=") + frequencies[std::size_t(frequency)];
    const auto number = [this](int low, int high) {
        return [this, low, high] { return std::to_string(pick(low, high)); };
    };
    const auto part = [&](const char* name, int percent, int most, auto value) {
        if (!chance(percent)) return false;
        rule += std::string(";") + name + "=" + some(most, value);
        return true;
    };
    if (frequency == secondly) {
        rule += ";INTERVAL=" + std::to_string(pick(400, 90'000));
    } else if (chance(45)) {
        rule += ";INTERVAL=" + std::to_string(pick(2, frequency == minutely ? 300 : 5));
    }
    bool isChoice = part("BYMONTH", frequency < weekly ? 15 : 30, 4, number(1, 12));
    bool isWeekNumber = false;
    if (frequency == yearly && chance(15)) {
        isWeekNumber = part("BYWEEKNO", 100, 3,
            [this] { return std::to_string(chance(70) ? pick(1, 53) : -pick(1, 10)); });
    } else if (frequency == yearly && chance(20)) {
        isChoice |= part("BYYEARDAY", 100, 4,
            [this] { return std::to_string(chance(70) ? pick(1, 366) : -pick(1, 366)); });
    } else if (frequency != weekly) {
        isChoice |= part("BYMONTHDAY", frequency == daily || frequency < daily ? 12 : 35, 5,
            [this] { return std::to_string(chance(75) ? pick(1, 31) : -pick(1, 31)); });
    }
    const bool mayCount = (frequency == monthly || frequency == yearly) && !isWeekNumber
        && rule.find("BYMONTHDAY") == rule.npos && rule.find("BYYEARDAY") == rule.npos;
    isChoice |= part("BYDAY",
        isWeekNumber              ? 100
            : frequency >= weekly ? 45
                                  : 20,
        3, [&, this] {
            const std::string day = weekdays[std::size_t(pick(0, 6))];
            if (!mayCount || chance(40)) return day;
            return std::to_string(chance(60) ? pick(1, 5) : -pick(1, 5)) + day;
        });
    if (zone_ != "day") {
        isChoice |= part("BYHOUR", frequency <= hourly ? 15 : 12, 3, number(0, 23));
        isChoice |= part("BYMINUTE", frequency <= minutely ? 10 : 12, 3, number(0, 59));
        isChoice |= part("BYSECOND", frequency == secondly ? 0 : 8, 2, number(0, 59));
    }
    if (isChoice && chance(15)) {
        rule += ";BYSETPOS=" + some(2, [this, frequency] {
            return std::to_string(chance(50) ? pick(1, frequency < daily ? 1 : 2) : -pick(1, 2));
        });
    }
    if (chance(20)) rule += std::string(";WKST=") + weekdays[std::size_t(pick(0, 6))];
    return rule;
}

std::string SeriesMaker::inZone(const std::string& name, const std::string& tzid,
    std::int64_t local, const std::string& parameters) const
{
    const auto kind = kindOf(tzid);
    const auto zone = kind == EventMoment::Kind::day ? ";VALUE=DATE"
        : kind == EventMoment::Kind::zoned           ? ";TZID=" + tzid
                                                     : std::string();
    return name + parameters + zone + ":" + momentOf(local, kind).value();
}

/// A date of the series, written in some other zone.
std::string SeriesMaker::elsewhere(const std::string& name, std::int64_t local)
{
    const auto kind = kindOf(zone_);
    if (kind != EventMoment::Kind::zoned && kind != EventMoment::Kind::utc)
        return inZone(name, zone_, local);
    const Moment moment {local, kind, &zoneOf(zone_)};
    const std::string other = zones[std::size_t(pick(2, int(zones.size()) - 1))];
    const auto there = localOf(zoneOf(other), moment.time());
    const Moment read {there, kindOf(other), &zoneOf(other)};
    // Of an hour that is repeated there, only the first can be written.
    if (read.time() != moment.time()) return inZone(name, "UTC", moment.time());
    return inZone(name, other, there);
}

MadeSeries SeriesMaker::next()
{
    zone_ = zones[std::size_t(pick(0, int(zones.size()) - 1))];
    const int frequency = chance(15) && zone_ != "day" ? pick(0, 2) : pick(3, 6);
    const int dayLength = frequency == 0 ? 2 : frequency == 1 ? 5 : frequency == 2 ? 40 : 900;
    MadeSeries made {};
    made.isPlain = true;
    auto start = newYear2016 + pick(0, 2000) * millisecondsOfDay;
    // Many at the times at which clocks change.
    if (zone_ != "day")
        start += chance(40) ? pick(0, 7) * 30 * minute : pick(0, 24 * 60 - 1) * minute;
    made.from = dayOf(start) + pick(-2, dayLength) * millisecondsOfDay;
    made.to = made.from + pick(1, frequency < 2 ? 3 : frequency < 4 ? 40 : 400) * millisecondsOfDay;

    made.rule = rule(frequency);
    const Moment first {start, kindOf(zone_), &zoneOf(zone_)};
    // Most start with an instance of the rule, as the RFC wants it.
    if (chance(80)) {
        const RuleText text(made.rule);
        RuleIterator times(text, first, start, start + 2000 * millisecondsOfDay);
        if (const auto time = times.next()) start = *time;
    }
    const auto last = start + pick(1, dayLength) * millisecondsOfDay;
    switch (pick(0, 5)) {
    case 0:
        made.rule += ";COUNT=" + std::to_string(pick(1, 60));
        break;
    case 1:
        made.rule += ";UNTIL=" + momentOf(last, EventMoment::Kind::day).value();
        break;
    case 2:
        if (zone_ == "day") break;
        made.rule += ";UNTIL="
            + momentOf(last, zone_ == "floating" ? kindOf(zone_) : EventMoment::Kind::utc).value();
        break;
    default:
        break;
    }
    std::vector<std::int64_t> dates {start};
    const RuleText text(made.rule);
    RuleIterator times(text, {start, kindOf(zone_), &zoneOf(zone_)}, start, made.to);
    for (int i = 0; i < 3000; ++i)
        if (const auto time = times.next()) dates.push_back(*time);
    const auto date = [&] { return dates[std::size_t(pick(0, int(dates.size()) - 1))]; };

    std::string lines = inZone("DTSTART", zone_, start) + "\n";
    if (zone_ == "day") {
        lines += chance(50) ? inZone("DTEND", zone_, start + pick(1, 3) * millisecondsOfDay) + "\n"
                            : std::string(chance(50) ? "DURATION:P2D\n" : "");
    } else {
        lines += std::string("DURATION:") + (chance(30) ? "P1DT" : "PT")
            + std::to_string(pick(1, 90)) + "M\n";
    }
    lines += "RRULE:" + made.rule + "\n";
    for (int i = chance(30) ? pick(1, 4) : 0; i > 0; --i)
        lines += elsewhere("EXDATE", date()) + "\n";
    if (chance(5)) {
        lines += inZone("EXDATE", "day", dayOf(date())) + "\n";
        made.isPlain = made.isPlain && zone_ == "day";
    }
    for (int i = chance(20) ? pick(1, 3) : 0; i > 0; --i) {
        const auto added
            = date() + pick(1, 40) * (zone_ == "day" ? millisecondsOfDay : 17 * minute);
        const bool isPeriod = zone_ == "UTC" && chance(50);
        lines += isPeriod ? inZone("RDATE;VALUE=PERIOD", zone_, added) + "/PT5M\n"
                          : elsewhere("RDATE", added) + "\n";
    }
    made.text = "BEGIN:VEVENT\nUID:1\n" + lines + "END:VEVENT\n";
    for (int i = chance(25) ? pick(1, 3) : 0; i > 0; --i) {
        made.isPlain = false;
        const auto id = date();
        const auto moved
            = id + pick(-30, 30) * (zone_ == "day" || chance(30) ? millisecondsOfDay : 11 * minute);
        const bool isFuture = i == 1 && chance(40);
        made.text += "BEGIN:VEVENT\nUID:1\n"
            + (isFuture ? inZone("RECURRENCE-ID", zone_, id, ";RANGE=THISANDFUTURE")
                        : elsewhere("RECURRENCE-ID", id))
            + "\n" + inZone("DTSTART", zone_, moved) + "\n"
            + (zone_ == "day" ? "DURATION:P1D\n" : "DURATION:PT50M\n") + "END:VEVENT\n";
    }
    made.text = "BEGIN:VCALENDAR\n" + made.text + "END:VCALENDAR\n";
    return made;
}

} // namespace Tessel::Test
