#include "Tessel/Session/Recurrence/TextBounds.h"

#include "Tessel/Session/Recurrence/Series.h"

#include <algorithm>

namespace Tessel {

Bounds bounds(std::string_view text)
{
    const auto tree = TextTree::read(std::string(text));
    if (!tree) return Bounds::always();
    SeriesZones zones(tree.value(), TimeZone::UTC());
    const auto parts = readParts(tree.value(), zones);
    if (!parts) return Bounds::always();
    auto bounds = Bounds::never();
    for (const auto& series : seriesOf(parts.value())) {
        const auto own = series.bounds();
        bounds.first = std::min(bounds.first, own.first);
        bounds.last = std::max(bounds.last, own.last);
    }
    constexpr auto day = millisecondsOfDay;
    if (bounds.first > bounds.last) return bounds;
    return {
        bounds.first - day, bounds.last == Bounds::always().last ? bounds.last : bounds.last + day};
}

} // namespace Tessel
