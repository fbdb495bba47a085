#pragma once

#include "Tessel/icalendar/CGICalendarParameter.h"
#include "Tessel/icalendar/NamedNodes.h"

#include <cstddef>
#include <map>
#include <memory>
#include <string_view>
#include <utility>

namespace Tessel {

/// Finds the parameters of a line by name while they are being added. A few are searched one by
/// one; from then on an ordered map keeps a line with very many parameters cheap, which a hash
/// table would not do for names chosen to collide.
class ParameterIndex {
public:
    using Parameters = CGICalendarNodes<CGICalendarParameter>;

    explicit ParameterIndex(Parameters& parameters)
        : parameters_(parameters)
    {
    }

    /// Null when there is none, and for the empty name.
    CGICalendarParameter* find(std::string_view name) const
    {
        if (parameters_.filled().size() <= few) return firstNamed(parameters_.filled(), name);
        const auto found = byName_.find(name);
        return found == byName_.end() ? nullptr : found->second;
    }

    /// Adds a parameter that `find` does not find.
    void append(std::shared_ptr<CGICalendarParameter> parameter)
    {
        parameters_.push_back(std::move(parameter));
        const auto& nodes = parameters_.filled();
        if (nodes.size() <= few) return;
        for (; listed_ < nodes.size(); ++listed_) {
            auto& node = *nodes[listed_];
            if (node.hasName()) byName_.emplace(*node.name(), &node);
        }
    }

private:
    static constexpr std::size_t few = 8;

    Parameters& parameters_;
    std::map<std::string_view, CGICalendarParameter*> byName_;
    std::size_t listed_ = 0;
};

} // namespace Tessel
