#include "apps/tessel/commands/EventOptions.h"

#include "apps/tessel/accounts/Stop.h"
#include "apps/tessel/commands/GivenTimes.h"
#include "apps/tessel/commands/UserTimes.h"
#include "apps/tessel/output/Wording.h"

#include <algorithm>

namespace Tessel::App {

namespace {

/// A time on the clock of `like`.
EventMoment onClockOf(const EventMoment& like, const EventMoment& time, TextZones& zones)
{
    if (time.isDay() || like.isDay()) return time;
    auto moment = like;
    moment.local = zones.localAs(like, time);
    if (like.kind == EventMoment::Kind::floating && time.kind == EventMoment::Kind::utc)
        moment.local = clockAt(userClock(clockOf(time)));
    return moment;
}

/// Of what lasts all day.
EventDuration wholeDays(const EventDuration& length)
{
    using std::chrono::days;
    const auto whole = std::chrono::floor<days>(length.total());
    if (whole == length.total() && whole > days(0)) return {whole, {}};
    throw Stop::usage("The event has days and no times, so it lasts whole days: give --duration 2d "
                      "or such, or with --start a time too.");
}

template <class T> void set(Change<T>& change, const std::optional<T>& value)
{
    if (value) change = *value;
}

constexpr std::pair<const char*, void (*)(EventEdit&)> clearings[] {
    {"description", [](EventEdit& edit) { edit.description = cleared; }},
    {"location", [](EventEdit& edit) { edit.location = cleared; }},
    {"url", [](EventEdit& edit) { edit.url = cleared; }},
    {"status", [](EventEdit& edit) { edit.status = cleared; }},
    {"categories", [](EventEdit& edit) { edit.categories = cleared; }},
    {"alarms", [](EventEdit& edit) { edit.alarms = cleared; }},
    {"repeat", [](EventEdit& edit) { edit.rule = cleared; }},
};

} // namespace

void EventOptions::addTo(CLI::App& app, bool isNew)
{
    const auto text = [&](const char* name, Text& value, const char* type, const char* meaning) {
        return app.add_option(name, value, meaning)->type_name(type);
    };
    text("--summary", summary_, "TEXT", "what it is");
    text("--start", start_, "WHEN", "a date for all day, or date and time: 2027-03-01T12:00");
    auto* end = text("--end", end_, "WHEN", "its end; of days the last one");
    text("--duration", duration_, "LENGTH", "how long it lasts instead: 90m, 2d")->excludes(end);
    app.add_option("--zone", zone_, "time zone of these times; your own without it")
        ->type_name("ZONE");
    text("--description", description_, "TEXT", "more about it");
    text("--location", location_, "TEXT", "where it is");
    text("--url", url_, "URL", "a page about it");
    text("--status", status_, "STATUS", "confirmed, tentative or cancelled")
        ->check(CLI::IsMember({"confirmed", "tentative", "cancelled"}, CLI::ignore_case));
    app.add_option("--category", categories_, "a category; may be repeated")
        ->allow_extra_args(false)
        ->type_name("TEXT");
    app.add_option("--alarm", alarms_, "remind so long before the start: 15m; may be repeated")
        ->allow_extra_args(false)
        ->type_name("LENGTH");
    text("--repeat", repeat_, "RULE",
        "daily, weekly, monthly, yearly, or a rule such as FREQ=WEEKLY;BYDAY=MO,WE");
    auto* until = text("--until", until_, "DATE", "last day of a series");
    app.add_option("--times", times_, "how often a series takes place instead, 1 to 100000")
        ->type_name("NUMBER")
        ->check(CLI::Range(1, 100'000))
        ->excludes(until);
    app.add_option("--invite", invited_, "ask somebody to come; may be repeated")
        ->allow_extra_args(false)
        ->type_name("ADDRESS");
    if (isNew) return;
    std::vector<std::string> clearable;
    for (const auto& each : clearings)
        clearable.emplace_back(each.first);
    app.add_option("--uninvite", uninvited_, "no longer ask; may be repeated")
        ->allow_extra_args(false)
        ->type_name("ADDRESS");
    app.add_option("--clear", cleared_, "take away " + joined(clearable) + "; may be repeated")
        ->allow_extra_args(false)
        ->type_name("WHAT")
        ->check(CLI::IsMember(clearable));
}

EventEdit EventOptions::texts() const
{
    EventEdit edit;
    set(edit.summary, summary_);
    set(edit.description, description_);
    set(edit.location, location_);
    set(edit.url, url_);
    if (status_) edit.status = inCapitals(*status_);
    if (!categories_.empty()) edit.categories = categories_;
    std::vector<EventAlarm> alarms;
    for (const auto& each : alarms_)
        alarms.push_back({durationOf(each).total()});
    if (!alarms.empty()) edit.alarms = std::move(alarms);
    for (const auto& address : invited_)
        edit.attendees.push_back({.address = address,
            .status = "NEEDS-ACTION",
            .role = "REQ-PARTICIPANT",
            .rsvp = true});
    edit.removedAttendees = uninvited_;
    for (const auto& [what, clear] : clearings) {
        if (std::count(cleared_.begin(), cleared_.end(), what) > 0) clear(edit);
    }
    return edit;
}

std::string EventOptions::rule(TextZones& zones, const EventMoment& start) const
{
    auto rule = inCapitals(*repeat_);
    if (rule.find('=') == rule.npos) rule.insert(0, "FREQ=");
    if (times_) rule += ";COUNT=" + std::to_string(*times_);
    if (until_) {
        // Without a zone it is on the clock of the series, which gives it the form of its start.
        auto last = onClockOf(start, momentOf(*until_, zone_), zones);
        if (last.kind == EventMoment::Kind::zoned) last = EventMoment::floating(last.local);
        rule += ";UNTIL=" + last.value();
    }
    return rule;
}

EventEdit EventOptions::edit(TextZones zones, const std::optional<EventMoment>& oldStart) const
{
    if (!repeat_ && (times_ || until_)) throw Stop::usage("--times and --until need --repeat.");
    const auto given = [&](const std::string& text) {
        const auto time = momentOf(text, zone_);
        return oldStart && zone_.empty() ? onClockOf(*oldStart, time, zones) : time;
    };
    if (!start_ && !oldStart && (duration_ || end_ || repeat_))
        throw Stop::usage("The event has no start: give --start.");
    auto edit = texts();
    const auto start = start_ ? given(*start_) : oldStart.value_or(EventMoment());
    if (start_) edit.start = start;
    if (duration_) {
        auto length = durationOf(*duration_);
        if (start.isDay()) length = wholeDays(length);
        edit.end = zones.after(start, length);
    } else if (end_) {
        auto end = given(*end_);
        if (end.isDay()) end.local += std::chrono::days(1);
        edit.end = end;
    }
    if (repeat_) edit.rule = rule(zones, start);
    return edit;
}

EventEdit EventOptions::creation() const
{
    if (!start_) throw Stop::usage("When? Give --start.");
    return edit(TextZones(), {});
}

EventEdit EventOptions::changeOf(
    const EventText& event, const std::optional<EventMoment>& start) const
{
    auto change = edit(TextZones(event.tree()), start);
    if (change == EventEdit()) throw Stop::usage("Nothing to change: see --help for what can be.");
    return change;
}

} // namespace Tessel::App
