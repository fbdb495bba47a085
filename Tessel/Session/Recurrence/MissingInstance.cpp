#include "Tessel/Session/Recurrence/MissingInstance.h"

#include "Tessel/Session/Recurrence/Instances.h"

#include <algorithm>
#include <functional>

namespace Tessel {

std::optional<Failure> missingInstance(const EventText& event, const EventEdit& edit)
{
    const auto& instance = edit.instance;
    if (!instance || !event.isSeries() || event.overrideOf(*instance)) return std::nullopt;
    const auto overrides = event.overrides();
    if (std::any_of(overrides.begin(), overrides.end(), std::mem_fn(&EventPart::isThisAndFuture)))
        return std::nullopt;
    const auto start = event.dateOf(*instance).millisecondsSince1970();
    const auto found = instances(event.tree(), start, start + 1, TimeZone::UTC());
    const auto begins = [start](const Instance& each) { return each.start == start; };
    if (!found || std::any_of(found.value().begin(), found.value().end(), begins))
        return std::nullopt;
    return Failure {.kind = FailureKind::missing,
        .reason = "The event has no instance that begins at " + instance->value() + "."};
}

} // namespace Tessel
