#include "Tessel/Session/Recurrence/Instances.h"
#include "Tessel/Session/Recurrence/TextBounds.h"
#include "tests/Tessel/Session/Recurrence/SeriesMaker.h"
#include "tests/support/TemporaryDirectory.h"

#include "Tessel/Session/Recurrence/RuleText.h"
#include <gtest/gtest.h>
#include <libical/ical.h>

#include <algorithm>
#include <fstream>
#include <map>
#include <regex>
#include <sstream>

using namespace Tessel;
using namespace Tessel::Test;

namespace {

using Span = std::pair<std::int64_t, std::int64_t>;
using Spans = std::vector<Span>;

Spans ours(const MadeSeries& made)
{
    const auto found = instances(made.text, made.from, made.to, TimeZone::UTC());
    Spans spans;
    for (const auto& instance : found.value())
        spans.emplace_back(instance.start, instance.end);
    std::sort(spans.begin(), spans.end());
    return spans;
}

Spans libical(const MadeSeries& made)
{
    auto* calendar = icalparser_parse_string(made.text.c_str());
    auto* event = icalcomponent_get_first_component(calendar, ICAL_VEVENT_COMPONENT);
    Spans spans;
    const auto take = [](icalcomponent*, icaltime_span* span, void* spans) {
        static_cast<Spans*>(spans)->emplace_back(
            std::int64_t(span->start) * 1000, std::int64_t(span->end) * 1000);
    };
    const auto time = [](std::int64_t moment) {
        return icaltime_from_timet_with_zone(moment / 1000, 0, icaltimezone_get_utc_timezone());
    };
    icalcomponent_foreach_recurrence(event, time(made.from - millisecondsOfDay),
        time(made.to + millisecondsOfDay), take, &spans);
    icalcomponent_free(calendar);
    std::erase_if(spans, [&](const Span& span) {
        return span.first >= made.to || (span.second <= made.from && span.first < made.from);
    });
    std::sort(spans.begin(), spans.end());
    return spans;
}

/// What dateutil makes of all of them, in one process.
std::vector<Spans> dateutil(const std::vector<MadeSeries>& all)
{
    const TemporaryDirectory directory;
    const auto file = (directory.path() / "cases").string();
    {
        std::ofstream cases(file);
        for (const auto& made : all)
            cases << made.from << ' ' << made.to << '\n' << made.text << '\n';
    }
    const auto answers = file + ".out";
    const auto command
        = "/usr/bin/python3 " TESSEL_TEST_DATA "/expand.py " + file + " > " + answers;
    EXPECT_EQ(std::system(command.c_str()), 0);
    std::ifstream stream(answers);
    std::vector<Spans> result;
    for (std::string line; std::getline(stream, line);) {
        auto& spans = result.emplace_back();
        std::istringstream words(line);
        char slash = 0;
        for (Span span; words >> span.first >> slash >> span.second;)
            spans.push_back(span);
    }
    return result;
}

std::string shown(const Spans& spans)
{
    std::string text;
    for (std::size_t i = 0; i < std::min<std::size_t>(spans.size(), 12); ++i) {
        const auto time = icaltime_from_timet_with_zone(
            spans[i].first / 1000, 0, icaltimezone_get_utc_timezone());
        text += std::string(icaltime_as_ical_string(time)) + "+"
            + std::to_string((spans[i].second - spans[i].first) / 60'000) + " ";
    }
    return std::to_string(spans.size()) + ": " + text;
}

bool mixesNumbers(const std::string& rule)
{
    static const std::regex plain("BYDAY=([-0-9A-Z]+,)*[A-Z]{2}(,|;|$)");
    static const std::regex numbered("BYDAY=([-0-9A-Z]+,)*-?[1-5][A-Z]{2}");
    return std::regex_search(rule, plain) && std::regex_search(rule, numbered);
}

/// Libical is asked for the days of the rules and not for the rest, since it is wrong there by the
/// RFC. Empty where it has to agree.
std::string whyLibicalMayDiffer(const MadeSeries& made)
{
    const auto has = [&](const char* part) { return made.text.find(part) != made.text.npos; };
    if (!made.isPlain) return "it knows no RECURRENCE-ID, and no EXDATE of a day";
    if (has("BYSETPOS")) return "it counts days for BYSETPOS, not times (3.3.10)";
    if (has("FREQ=YEARLY") && has("BYMONTHDAY") && !has("BYMONTH="))
        return "it takes the month of the start for BYMONTHDAY, not every month (3.3.10)";
    if (has("BYYEARDAY") && has("BYMONTH="))
        return "it finds no day of the year in most months (3.3.10)";
    if (has("RDATE"))
        return "it reads RDATE on the clock of the start, whatever its zone (3.8.5.2)";
    static const std::regex early("DTSTART;TZID=.*T0[0-3]");
    if (std::regex_search(made.text, early) || has("BYHOUR"))
        return "it shifts what comes after a time that clocks skip, and takes the second of two "
               "(3.3.5)";
    const RuleText rule(made.rule);
    if (rule.isWithinDay())
        return "it counts INTERVAL from another hour, and looks at every second";
    if (rule.hasUntil() && !has("VALUE=DATE:")
        && made.rule.find('T', made.rule.find("UNTIL=") + 6) == made.rule.npos)
        return "it ends before the day of an UNTIL without time";
    if (has("FREQ=DAILY") && has("BYMONTHDAY=-")) return "it knows no days from the end in DAILY";
    return {};
}

/// Those in the range: to libical an all-day event is a day longer, less a second.
std::vector<std::int64_t> startsOf(const Spans& spans, const MadeSeries& made)
{
    std::vector<std::int64_t> starts;
    for (const auto& span : spans)
        if (span.first >= made.from && span.first < made.to
            && (starts.empty() || starts.back() != span.first))
            starts.push_back(span.first);
    return starts;
}

} // namespace

TEST(Expansion, AgreesWithTwoOthers)
{
    icalerror_set_errors_are_fatal(0);
    SeriesMaker maker;
    std::vector<MadeSeries> all;
    for (int i = 0; i < 2000; ++i)
        all.push_back(maker.next());
    const auto byDateutil = dateutil(all);
    ASSERT_EQ(byDateutil.size(), all.size());
    std::map<std::string, int> classes;
    for (std::size_t i = 0; i < all.size(); ++i) {
        const auto& made = all[i];
        const auto found = ours(made);
        for (const auto& [start, end] : found)
            EXPECT_TRUE(bounds(made.text).meets({start, end + 1})) << made.text;
        if (mixesNumbers(made.rule)) {
            ++classes["dateutil: takes what BYDAY has with and without a number as one (3.3.10)"];
        } else {
            EXPECT_EQ(shown(found), shown(byDateutil[i])) << "dateutil of " << i << "\n"
                                                          << made.text;
        }
        if (const auto why = whyLibicalMayDiffer(made); !why.empty()) {
            ++classes[why];
        } else {
            ++classes["compared"];
            EXPECT_EQ(startsOf(found, made), startsOf(libical(made), made))
                << "libical of " << i << "\n"
                << made.text;
        }
        classes["empty"] += found.empty();
    }
    // Each kind of difference comes up, so that none is named in vain.
    EXPECT_GT(classes["compared"], 400) << testing::PrintToString(classes);
    EXPECT_GT(classes["empty"], 0);
    EXPECT_EQ(classes.size(), 12U) << testing::PrintToString(classes);
}
