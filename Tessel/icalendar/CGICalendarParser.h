#pragma once

#include "Tessel/icalendar/CGICalendar.h"
#include "Tessel/icalendar/ContentLineParts.h"
#include "Tessel/icalendar/ParseArena.h"

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>

namespace Tessel {

/// Reads one text into a calendar. Lines are unfolded in place, in the copy of the text that the
/// nodes then refer to: no text is copied.
class CGICalendarParser {
public:
    /// At most that many components, properties and parameters are made, blank ones not counted.
    CGICalendarParser(CGICalendar& calendar, std::string text, std::size_t mostNodes);

    /// False when the text holds more; the calendar then holds a part of it.
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

    CGICalendar& calendar_;
    std::unique_ptr<ParseArena, Releaser> arena_;
    std::size_t nodesLeft_;
};

} // namespace Tessel
