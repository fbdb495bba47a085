#include "Tessel/Session/Text/EventText.h"
#include "benchmarks/Corpus.h"
#include "benchmarks/Libical.h"
#include "benchmarks/Table.h"

#include <string>
#include <vector>

using namespace Tessel;
using namespace Tessel::Benchmarks;

namespace {

const std::string summary = "Review, second round";

std::string editedByLibical(const std::string& text)
{
    const auto calendar = libicalTree(text);
    auto* const event = icalcomponent_get_first_component(calendar.get(), ICAL_VEVENT_COMPONENT);
    icalcomponent_set_summary(event, summary.c_str());
    const auto now
        = icaltime_from_timet_with_zone(1'767'268'800, 0, icaltimezone_get_utc_timezone());
    icalcomponent_set_dtstamp(event, now);
    return libicalText(calendar).get();
}

} // namespace

int main()
{
    const auto texts = eventResources(corpusEvents);
    const auto now = Date::fromSecondsSince1970(1'767'268'800);
    const auto ours = [&] {
        for (const auto& text : texts) {
            const auto event = EventText::read(text);
            keep(event.value().apply({.summary = summary}, now).value().event.text());
        }
    };
    const auto libical = [&] {
        for (const auto& text : texts)
            keep(editedByLibical(text));
    };
    printRow("EventText read and one edit, 10,000 texts: libical", measure(ours, libical, 3), "s",
        timesFaster(10));
}
