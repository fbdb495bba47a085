#pragma once

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

template <typename Node>
Node& firstNamedOrNew(std::vector<std::shared_ptr<Node>>& nodes, std::string_view name)
{
    if (auto* const node = firstNamed(nodes, name)) return *node;
    auto node = std::make_shared<Node>();
    node->setName(name);
    return *nodes.emplace_back(std::move(node));
}

template <typename Node>
bool removeNamed(std::vector<std::shared_ptr<Node>>& nodes, std::string_view name)
{
    const auto found = findNamed(nodes, name);
    if (found == nodes.end()) return false;
    nodes.erase(found);
    return true;
}

template <typename Node>
std::vector<std::optional<std::string>> allNames(const std::vector<std::shared_ptr<Node>>& nodes)
{
    std::vector<std::optional<std::string>> names;
    for (const auto& node : nodes) {
        if (node) names.emplace_back(node->name());
    }
    return names;
}

} // namespace Tessel
