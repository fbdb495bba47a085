#include "Tessel/Session/Recurrence/Instances.h"

#include "Tessel/Platform/Foundation/Base/Limits.h"
#include "Tessel/Session/Recurrence/Series.h"

#include <algorithm>

namespace Tessel {

Result<std::vector<Instance>> instances(
    const TextTree& text, std::int64_t from, std::int64_t to, const TimeZone& local)
{
    SeriesZones zones(text, local);
    const auto parts = readParts(text, zones);
    if (!parts) return parts.failure();
    std::vector<Instance> instances;
    for (const auto& series : seriesOf(parts.value()))
        series.addInstances(from, to, Limits::recurrenceInstances, instances);
    std::stable_sort(instances.begin(), instances.end(),
        [](const auto& a, const auto& b) { return a.start < b.start; });
    return instances;
}

Result<std::vector<Instance>> instances(
    std::string text, std::int64_t from, std::int64_t to, const TimeZone& local)
{
    const auto tree = TextTree::read(std::move(text));
    if (!tree) return tree.failure();
    return instances(tree.value(), from, to, local);
}

} // namespace Tessel
