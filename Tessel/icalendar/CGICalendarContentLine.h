#pragma once

#include "Tessel/icalendar/CGICalendarProperty.h"

#include <memory>
#include <string>
#include <string_view>

namespace Tessel {

/// One unfolded line of iCalendar text, split into name, parameters and value (RFC 5545, 3.1).
class CGICalendarContentLine final : public CGICalendarProperty {
public:
    /// Whether a physical line continues the one before: it begins with a space or a tab.
    static bool IsFoldingLineString(std::string_view line);
    static std::shared_ptr<CGICalendarContentLine> contentLineWithString(std::string_view line);

    CGICalendarContentLine() = default;
    explicit CGICalendarContentLine(std::string_view line) { setString(line); }

    /// Splits a line after trimming newline characters (LF VT FF CR NEL U+2028 U+2029) from both
    /// ends. Name and parameters end at the FIRST colon and are split at every semicolon, even
    /// within double quotes; the value is all that follows, with its backslashes. Parameters found
    /// replace the present ones. A line without a colon sets nothing.
    void setString(std::string_view line);

    bool isBegin() const { return isName("BEGIN"); } ///< case-sensitive
    bool isEnd() const { return isName("END"); } ///< case-sensitive

    /// Appends the line as `CGICalendarProperty` does, but with "\n", ";" and "," escaped by
    /// backslashes over the WHOLE line, the separators of its parameters included.
    void appendDescription(std::string& text) const override;
};

} // namespace Tessel
