#include "apps/tessel/commands/EventInstances.h"

#include "apps/tessel/commands/GivenTimes.h"
#include "apps/tessel/commands/UserTimes.h"

#include <algorithm>

namespace Tessel::App {

namespace {

/// Instances of a series that the user may mean.
class InstanceSearch {
public:
    InstanceSearch(const EventText& event, const std::string& text)
        : event_(event)
        , zones_(event.tree())
        , given_(momentOf(text))
        , isUTC_(text.ends_with('Z'))
        , time_(userMilliseconds(given_))
    {
        constexpr auto around = 2 * millisecondsOfDay; // further apart no two clocks are
        add(time_ - around, time_ + around);
        // What was moved away is found where it is now.
        for (const auto& part : event.overrides()) {
            const auto id = part.recurrenceId();
            const auto start = part.start();
            if (!id || !start || std::abs(timeOf(*id) - time_) > around) continue;
            const auto now = timeOf(*start);
            add(now, now + 1);
        }
        if (!isUTC_) return;
        const auto exact = std::find_if(found_.begin(), found_.end(),
            [&](const Instance& each) { return timeOf(*each.recurrenceId) == time_; });
        if (exact != found_.end()) found_ = {*exact};
    }

    const std::vector<Instance>& found() const { return found_; }

    /// What of them only one is called.
    std::string choices()
    {
        constexpr std::size_t shownAtMost = 4;
        std::string all;
        for (std::size_t i = 0; i < std::min(found_.size(), shownAtMost); ++i) {
            const auto date = Date::fromMillisecondsSince1970(timeOf(*found_[i].recurrenceId));
            const auto clock = startClock(found_[i]);
            all += (i == 0 ? "" : ", ") + isoMoment(EventMoment::utc(date)) + " (for "
                + isoDay(clock) + (found_[i].isAllDay ? "" : " " + hourOf(clock)) + ")";
        }
        return all + (found_.size() > shownAtMost ? " and others" : "");
    }

private:
    std::int64_t timeOf(const EventMoment& moment)
    {
        return zones_.dateOf(moment, here_).millisecondsSince1970();
    }

    bool isMeant(const Instance& instance)
    {
        const auto& id = *instance.recurrenceId;
        if (isUTC_) return timeOf(id) == time_ || instance.start == time_;
        const auto first = given_.isDay() ? clockOf(given_) : userClock(time_);
        const auto length = given_.isDay() ? millisecondsOfDay : 1;
        const auto clocks = {startClock(instance), userClock(timeOf(id)), clockOf(id)};
        return std::any_of(clocks.begin(), clocks.end(),
            [&](auto clock) { return clock >= first && clock < first + length; });
    }

    void add(std::int64_t from, std::int64_t to)
    {
        const auto days = instances(event_.tree(), from, to, here_);
        if (!days) throw Stop(days.failure());
        for (const auto& day : days.value()) {
            const bool isKnown = std::any_of(found_.begin(), found_.end(),
                [&](const Instance& each) { return each.recurrenceId == day.recurrenceId; });
            if (day.recurrenceId && !isKnown && isMeant(day)) found_.push_back(day);
        }
    }

    const EventText& event_;
    TextZones zones_;
    const TimeZone here_ = TimeZone::local();
    const EventMoment given_;
    const bool isUTC_;
    const std::int64_t time_;
    std::vector<Instance> found_;
};

EventMoment onClockOf(const EventText& event, const Instance& instance, std::int64_t clock)
{
    auto moment = event.part(instance.component).start().value_or(EventMoment());
    moment.local = clockAt(clock);
    return moment;
}

} // namespace

Instance instanceOf(const EventText& event, const std::string& text)
{
    if (!event.isSeries()) throw Stop::usage("The event does not repeat: leave --instance out.");
    InstanceSearch search(event, text);
    const auto& found = search.found();
    if (found.empty()) throw Stop::missing("The series has no instance on " + text + ".");
    if (found.size() > 1)
        throw Stop::usage("Several instances of the series may be that of " + text
            + ": give one of " + search.choices() + ".");
    return found.front();
}

bool takesPlace(const EventText& event)
{
    const auto rules = event.main().recurrence().rules;
    const bool isEndless = std::any_of(rules.begin(), rules.end(), [](const auto& written) {
        const auto rule = inCapitals(written);
        return rule.find("COUNT=") == rule.npos && rule.find("UNTIL=") == rule.npos;
    });
    if (isEndless) return true;
    const auto first = EventMoment::read("00000101").value_or(EventMoment());
    const auto last = EventMoment::read("99991231").value_or(EventMoment());
    const auto days = instances(event.tree(), clockOf(first), clockOf(last), TimeZone::local());
    return !days || !days.value().empty();
}

EventMoment startOf(const EventText& event, const Instance& instance)
{
    return onClockOf(event, instance, instance.localStart);
}

EventMoment endOf(const EventText& event, const Instance& instance)
{
    return onClockOf(event, instance, instance.localEnd);
}

std::int64_t startClock(const Instance& instance)
{
    return instance.isAllDay ? instance.localStart : userClock(instance.start);
}

Json describe(const HeldEvent& held, const Instance& instance)
{
    const auto part = held.event.part(instance.component);
    const bool isAllDay = instance.isAllDay;
    return {{"start", isAllDay ? isoDay(instance.localStart) : isoTime(instance.start)},
        {"end", isAllDay ? isoDay(instance.localEnd) : isoTime(instance.end)},
        {"isAllDay", isAllDay}, {"summary", orNull(part.summary())},
        {"location", orNull(part.location())}, {"calendar", nameOf(held.calendar)},
        {"uid", part.uid()}, {"href", held.resource.href},
        {"instance",
            instance.recurrenceId ? Json(isoMoment(*instance.recurrenceId)) : Json(nullptr)},
        {"isChanged", instance.isChanged}, {"isCancelled", instance.isCancelled},
        {"isWaiting", held.waits}};
}

} // namespace Tessel::App
