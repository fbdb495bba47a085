#include "apps/tessel/commands/EventOptions.h"

#include "apps/tessel/accounts/Stop.h"
#include "apps/tessel/commands/UserTimes.h"

namespace Tessel::App {

namespace {

/// A time for an event that has times of this kind already.
EventMoment asIn(const EventText& event, const EventMoment& like, const EventMoment& given,
    const std::string& zone)
{
    using Kind = EventMoment::Kind;
    if (!zone.empty() || given.isDay() || like.isDay()) return given;
    if (like.kind == Kind::floating && given.kind == Kind::zoned)
        return EventMoment::floating(given.local);
    if (like.kind == Kind::floating) return given;
    auto moment = like;
    moment.local = TextZones(event.tree()).localAs(like, given);
    return moment;
}

template <class T> void set(Change<T>& change, const std::optional<T>& value)
{
    if (value) change = *value;
}

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
    text("--status", status_, "STATUS", "confirmed, tentative or cancelled");
    app.add_option("--category", categories_, "a category; may be repeated")
        ->allow_extra_args(false)
        ->type_name("TEXT");
    app.add_option("--alarm", alarms_, "remind so long before the start: 15m; may be repeated")
        ->allow_extra_args(false)
        ->type_name("LENGTH");
    text("--repeat", repeat_, "RULE",
        "daily, weekly, monthly, yearly, or a rule such as FREQ=WEEKLY;BYDAY=MO,WE");
    auto* until = text("--until", until_, "DATE", "last day of a series");
    app.add_option("--times", times_, "how often a series takes place")
        ->type_name("NUMBER")
        ->check(CLI::Range(1, 100'000))
        ->excludes(until);
    app.add_option("--invite", invited_, "ask somebody to come; may be repeated")
        ->allow_extra_args(false)
        ->type_name("ADDRESS");
    if (isNew) return;
    app.add_option("--uninvite", uninvited_, "no longer ask; may be repeated")
        ->allow_extra_args(false)
        ->type_name("ADDRESS");
    app.add_option("--clear", cleared_, "take something away; may be repeated")
        ->allow_extra_args(false)
        ->type_name("WHAT")
        ->check(CLI::IsMember(
            {"description", "location", "url", "status", "categories", "alarms", "repeat"}));
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
    for (const auto& what : cleared_) {
        if (what == "description") edit.description = cleared;
        if (what == "location") edit.location = cleared;
        if (what == "url") edit.url = cleared;
        if (what == "status") edit.status = cleared;
        if (what == "categories") edit.categories = cleared;
        if (what == "alarms") edit.alarms = cleared;
        if (what == "repeat") edit.rule = cleared;
    }
    return edit;
}

void EventOptions::setEnd(EventEdit& edit, const EventMoment& start,
    const std::optional<EventPart>& part, const EventText* event) const
{
    if (duration_) {
        const auto length = durationOf(*duration_);
        auto end = start;
        end.local += start.isDay() ? std::chrono::ceil<std::chrono::days>(length.total())
                                   : length.total();
        edit.end = end;
    } else if (end_) {
        auto end = momentOf(*end_, zone_);
        if (end.isDay()) end.local += std::chrono::days(1);
        const auto like = part ? part->start() : std::nullopt;
        edit.end = like && event ? asIn(*event, *like, end, zone_) : end;
    }
}

std::string EventOptions::rule(const EventMoment& start) const
{
    auto rule = inCapitals(*repeat_);
    if (rule.find('=') == rule.npos) rule.insert(0, "FREQ=");
    if (times_) rule += ";COUNT=" + std::to_string(*times_);
    if (until_) {
        auto last = momentOf(*until_, zone_);
        if (!start.isDay()) {
            // UNTIL is in UTC where the series has a zone (RFC 5545, 3.3.10).
            if (last.isDay()) last.local += std::chrono::hours(24) - std::chrono::seconds(1);
            const auto time = Date::fromMillisecondsSince1970(userMilliseconds(last));
            if (start.kind != EventMoment::Kind::floating) last = EventMoment::utc(time);
        }
        rule += ";UNTIL=" + last.value();
    }
    return rule;
}

EventEdit EventOptions::creation() const
{
    if (!start_) throw Stop::usage("When? Give --start.");
    if (!repeat_ && (times_ || until_)) throw Stop::usage("--times and --until need --repeat.");
    auto edit = texts();
    const auto start = momentOf(*start_, zone_);
    edit.start = start;
    setEnd(edit, start);
    if (repeat_) edit.rule = rule(start);
    return edit;
}

EventEdit EventOptions::changeOf(const EventText& event, const EventPart& part) const
{
    if (!repeat_ && (times_ || until_)) throw Stop::usage("--times and --until need --repeat.");
    auto edit = texts();
    auto start = part.start();
    if (start_) {
        const auto given = momentOf(*start_, zone_);
        start = start ? asIn(event, *start, given, zone_) : given;
        edit.start = *start;
    }
    if (start) setEnd(edit, *start, part, &event);
    if (repeat_) edit.rule = rule(start.value_or(EventMoment()));
    if (edit == EventEdit()) throw Stop::usage("Nothing to change: see --help for what can be.");
    return edit;
}

} // namespace Tessel::App
