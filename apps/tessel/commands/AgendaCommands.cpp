#include "apps/tessel/commands/CaseFolding.h"
#include "apps/tessel/commands/CommandLine.h"
#include "apps/tessel/commands/EventInstances.h"
#include "apps/tessel/commands/EventTitle.h"
#include "apps/tessel/commands/GivenTimes.h"
#include "apps/tessel/commands/UserTimes.h"
#include "apps/tessel/output/ResultTable.h"
#include "apps/tessel/output/SafeText.h"
#include "apps/tessel/output/TextWidth.h"

#include <algorithm>
#include <map>
#include <memory>

namespace Tessel::App {

namespace {

struct RangeArguments {
    std::string calendar;
    std::string from;
    std::string to;
    std::string words; ///< of the summary
};

/// From the begin of the first day to the end of the last one.
Bounds rangeOf(const std::string& from, const std::string& to)
{
    constexpr int usualDays = 13;
    constexpr std::int64_t mostDays = 3'660;
    const auto first = momentOf(from);
    const auto last = to.empty() ? EventMoment::floating(first.local + std::chrono::days(usualDays))
                                 : momentOf(to);
    auto range = Bounds {userMilliseconds(first), userMilliseconds(last)};
    if (to.empty() || last.isDay()) {
        range.last = userMilliseconds(EventMoment::floating(
            std::chrono::floor<std::chrono::days>(last.local) + std::chrono::days(1)));
    }
    if (range.last <= range.first) throw Stop::usage("--to lies before --from.");
    if (range.last - range.first > mostDays * millisecondsOfDay)
        throw Stop::usage("The days from --from to --to are more than ten years.");
    return range;
}

/// One line of a day.
struct Entry {
    bool isTimed; ///< those that last all day come first
    std::int64_t start;
    std::string when;
    std::shared_ptr<const std::string> what; ///< the same one for all days of an event

    friend bool operator<(const Entry& a, const Entry& b)
    {
        return std::tie(a.isTimed, a.start, *a.what) < std::tie(b.isTimed, b.start, *b.what);
    }
};

/// What one event may have of the agenda: somebody may have invited to one that takes place every
/// second. One of every day within the longest range has all its lines.
constexpr std::size_t mostLinesOfEvent = 4'000;
constexpr std::size_t longestLine = 200;
constexpr std::size_t longestObject = 1'000; ///< of JSON; a longer one stands for several lines

class Agenda {
public:
    Agenda(const Output& out, Bounds range)
        : out_(out)
        , first_(userClock(range.first))
        , last_(userClock(range.last))
    {
    }

    /// False where these are too many for one event: then those that come first are shown.
    bool add(const HeldEvent& held, const std::vector<Instance>& instances)
    {
        std::map<std::pair<std::uint32_t, bool>, Said> said;
        std::size_t left = mostLinesOfEvent;
        for (const auto& instance : instances) {
            const auto key = std::pair(instance.component, instance.isCancelled);
            auto found = said.find(key);
            if (found == said.end()) found = said.emplace(key, Said::of(held, instance)).first;
            if (found->second.isEvent && !add(held, instance, found->second, left)) return false;
        }
        return true;
    }

    void print()
    {
        std::stable_sort(objects_.begin(), objects_.end(),
            [](const auto& a, const auto& b) { return a.first < b.first; });
        for (const auto& [start, object] : objects_)
            out_.object(object);
        if (days_.empty()) out_.line("Nothing from " + isoDay(first_) + " to " + isoDay(last_ - 1));
        bool isFirst = true;
        for (auto& [day, entries] : days_) {
            if (!std::exchange(isFirst, false)) out_.line("");
            out_.heading(longDay(day));
            std::sort(entries.begin(), entries.end());
            std::size_t width = 0;
            for (const auto& entry : entries)
                width = std::max(width, textWidth(entry.when));
            for (const auto& entry : entries) {
                out_.line("  " + entry.when + std::string(width - textWidth(entry.when), ' ') + "  "
                    + *entry.what);
            }
        }
    }

private:
    /// What is said of all instances that one component describes.
    struct Said {
        bool isEvent;
        std::shared_ptr<const std::string> line;
        std::size_t size; ///< of an object, about

        static Said of(const HeldEvent& held, const Instance& instance)
        {
            const auto part = held.event.part(instance.component);
            const auto summary = part.summary();
            const auto location = part.location();
            auto line = titleOf(part, held.resource.href);
            if (instance.isCancelled) line += " (cancelled)";
            if (location && location->find_first_not_of(" \n") != location->npos)
                line += ", " + *location;
            line = shortened(line, longestLine);
            if (held.waits) line += " (waits to be sent)";
            line += "  [" + shortened(nameOf(held.calendar), longestLine) + "]";
            const auto size = summary.value_or("").size() + location.value_or("").size()
                + part.uid().size() + held.resource.href.size();
            return {part.component().is("VEVENT"), std::make_shared<const std::string>(line), size};
        }
    };

    bool add(const HeldEvent& held, const Instance& instance, const Said& said, std::size_t& left)
    {
        if (out_.isJson()) {
            const auto cost = 1 + said.size / longestObject;
            if (cost > left) return false;
            left -= cost;
            objects_.push_back({instance.start, describe(held, instance)});
            return true;
        }
        const auto start = startClock(instance);
        const auto end = instance.isAllDay ? instance.localEnd : userClock(instance.end);
        const auto dayOf = [](std::int64_t clock) {
            return clock - (clock % millisecondsOfDay + millisecondsOfDay) % millisecondsOfDay;
        };
        for (auto day = std::max(dayOf(start), dayOf(first_));
             day < last_ && (day < end || day == dayOf(start)); day += millisecondsOfDay) {
            if (left-- == 0) return false;
            const bool begins = start >= day;
            const bool ends = end <= day + millisecondsOfDay;
            const bool isWhole = instance.isAllDay || (!begins && !ends);
            const auto when = isWhole ? std::string("all day")
                : start == end        ? hourOf(start)
                                      : (begins ? hourOf(start) : "     ") + "–"
                    + (!ends                                 ? ""
                            : end == day + millisecondsOfDay ? "24:00"
                                                             : hourOf(end));
            days_[day].push_back({!isWhole, start, when, said.line});
        }
        return true;
    }

    const Output& out_;
    const std::int64_t first_;
    const std::int64_t last_;
    std::map<std::int64_t, std::vector<Entry>> days_;
    std::vector<std::pair<std::int64_t, Json>> objects_;
};

/// Those of an event within a range; one that cannot be placed in time is named.
std::vector<Instance> instancesOf(Workspace& workspace, const HeldEvent& held, const Bounds& range)
{
    auto days = instances(held.event.tree(), range.first, range.last, TimeZone::local());
    if (days) return std::move(days).value();
    workspace.leaveOut(held.resource.href,
        titleOf(held.event.main(), "the event") + ": " + reasonOf(days.failure()));
    return {};
}

void agenda(Workspace& workspace, const RangeArguments& given)
{
    const auto range = rangeOf(given.from.empty() ? "today" : given.from, given.to);
    Agenda agenda(workspace.out(), range);
    HeldEvents(workspace, given.calendar)
        .visit(
            [&](const HeldEvent& held) {
                if (!agenda.add(held, instancesOf(workspace, held, range)))
                    workspace.leaveOut(held.resource.href,
                        "It takes place too often: not all of its days are shown.");
            },
            range);
    agenda.print();
}

void events(Workspace& workspace, const RangeArguments& given)
{
    constexpr std::size_t longestSummary = 80;
    constexpr Bounds anyMoment {0, 1}; // enough to know whether there is a start
    if (given.from.empty() && !given.to.empty()) throw Stop::usage("--to needs --from.");
    std::optional<Bounds> range;
    if (!given.from.empty()) range = rangeOf(given.from, given.to);
    const auto here = TimeZone::local();
    const auto words = foldedCase(given.words);
    std::multimap<std::int64_t, HeldEvent> found;
    HeldEvents(workspace, given.calendar)
        .visit(
            [&](const HeldEvent& held) {
                const auto main = held.event.main();
                if (foldedCase(main.summary().value_or("")).find(words) == std::string::npos)
                    return;
                const bool isWithin
                    = !instancesOf(workspace, held, range.value_or(anyMoment)).empty();
                if (range && !isWithin) return;
                const auto start = main.start();
                found.emplace(
                    start ? held.event.dateOf(*start, here).millisecondsSince1970() : 0, held);
            },
            range);
    ResultTable table(workspace.out(), {"START", "SUMMARY", "CALENDAR", "UID"});
    for (const auto& [time, held] : found) {
        const auto main = held.event.main();
        const auto start = main.start();
        auto summary = shortened(main.summary().value_or(""), longestSummary);
        if (held.event.isSeries()) summary += " (series)";
        if (held.waits) summary += " (waits to be sent)";
        table.add({start ? shownMoment(*start) : "", summary, nameOf(held.calendar), main.uid()},
            describe(held));
    }
    table.print("There are no such events.");
}

void addRange(CLI::App& app, RangeArguments& arguments)
{
    app.add_option("CALENDAR", arguments.calendar, "of this calendar only");
    app.add_option("--from", arguments.from, "first day: a date, today, tomorrow, +7")
        ->type_name("DATE");
    app.add_option("--to", arguments.to, "last day; without it two weeks")->type_name("DATE");
}

} // namespace

void addAgendaCommands(CommandLine& line)
{
    addCommand<RangeArguments>(line, line.app, "agenda",
        "Show the coming two weeks, or others, day by day on your own clock",
        "tessel agenda --from 2027-03-01 --to 2027-03-07", addRange, agenda);
    addCommand<RangeArguments>(
        line, line.app, "events", "List the events that are held",
        "tessel events Work --search Lunch",
        [](CLI::App& app, RangeArguments& arguments) {
            addRange(app, arguments);
            app.add_option("--search", arguments.words,
                   "only those with this in their summary, in capitals or not")
                ->type_name("TEXT");
        },
        events);
}

} // namespace Tessel::App
