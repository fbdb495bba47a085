#pragma once

#include "Tessel/icalendar/CGICalendarObject.h"
#include "Tessel/icalendar/ContentLineParts.h"
#include "Tessel/icalendar/ParseArena.h"

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace Tessel {

/// Reads the objects of one text. Lines are unfolded in place, in the copy of the text that the
/// nodes then refer to: no text is copied.
class CGICalendarParser {
public:
    using Objects = std::vector<std::shared_ptr<CGICalendarObject>>;
    using Components = std::vector<std::shared_ptr<CGICalendarComponent>>;

    /// Appends to `objects`; `open` is the stack of components that have begun and not ended.
    /// At most that many components, properties and parameters are made, blank ones not counted.
    CGICalendarParser(Objects& objects, Components& open, std::string text, std::size_t mostNodes);

    /// False when the text holds more; the objects then hold a part of it.
    bool parse();

private:
    struct Releaser {
        void operator()(ParseArena* arena) const { arena->release(); }
    };

    struct LimitPassed { };

    void readLines();
    void readLine(std::string_view line);
    void beginComponent(std::string_view type);
    std::shared_ptr<CGICalendarProperty> makeProperty(const ContentLineParts& parts);
    void readParameters(CGICalendarProperty& property, std::string_view parameters);
    template <typename Node> std::shared_ptr<Node> make();

    Objects& objects_;
    Components& open_;
    std::unique_ptr<ParseArena, Releaser> arena_;
    std::size_t nodesLeft_;
};

} // namespace Tessel
