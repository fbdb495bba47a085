#pragma once

#include "Tessel/icalendar/CGICalendarNodes.h"

#include <algorithm>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace Tessel {

// Look-ups by name in a list of properties or of parameters: the first of that name counts.

template <typename Node>
auto findNamed(const std::vector<std::shared_ptr<Node>>& nodes, std::string_view name)
{
    return std::find_if(
        nodes.begin(), nodes.end(), [&](const auto& node) { return node && node->isName(name); });
}

template <typename Node>
Node* firstNamed(const std::vector<std::shared_ptr<Node>>& nodes, std::string_view name)
{
    const auto found = findNamed(nodes, name);
    return found == nodes.end() ? nullptr : found->get();
}

template <typename Node> Node& firstNamedOrNew(CGICalendarNodes<Node>& nodes, std::string_view name)
{
    if (auto* const node = firstNamed(nodes.filled(), name)) return *node;
    auto node = std::make_shared<Node>();
    node->setName(name);
    return *nodes.emplace_back(std::move(node));
}

template <typename Node> bool removeNamed(CGICalendarNodes<Node>& nodes, std::string_view name)
{
    auto* const node = firstNamed(nodes.filled(), name);
    if (!node) return false;
    nodes.erase(std::find_if(
        nodes.begin(), nodes.end(), [&](const auto& each) { return each.get() == node; }));
    return true;
}

template <typename Node>
std::vector<std::optional<std::string>> allNames(const CGICalendarNodes<Node>& nodes)
{
    std::vector<std::optional<std::string>> names;
    nodes.walk(
        [&](const auto& node) {
            if (node) names.emplace_back(node->name());
        },
        [&](std::size_t blanks) { names.resize(names.size() + blanks); });
    return names;
}

} // namespace Tessel
