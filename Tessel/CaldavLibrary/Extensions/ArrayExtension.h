#pragma once

#include <concepts>
#include <cstddef>
#include <iterator>
#include <optional>
#include <vector>

namespace Tessel {

/// Walks `list` from its first element, again and again, and returns what it met: `count` elements,
/// or those before the first one that satisfies `stop`, whichever are fewer. A count below 1 gives
/// an empty list. Without a count `stop` must hold for some element, else the walk does not end.
template <class Element, std::predicate<const Element&> Stop>
std::vector<Element> repeatingList(
    const std::vector<Element>& list, std::optional<std::ptrdiff_t> count, Stop stop)
{
    std::vector<Element> result;
    if (list.empty()) return result;
    for (std::size_t index = 0; !stop(list[index]); index = (index + 1) % list.size()) {
        if (count && std::ssize(result) >= *count) break;
        result.push_back(list[index]);
    }
    return result;
}

/// Exactly `count` elements of the walk; none of an empty list.
template <class Element>
std::vector<Element> repeatingList(const std::vector<Element>& list, std::ptrdiff_t count)
{
    return repeatingList(list, count, [](const Element&) { return false; });
}

/// The walk up to the first element that satisfies `stop`.
template <class Element, std::predicate<const Element&> Stop>
std::vector<Element> repeatingList(const std::vector<Element>& list, Stop stop)
{
    return repeatingList(list, std::nullopt, stop);
}

} // namespace Tessel
