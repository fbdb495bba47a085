#pragma once

#include "Tessel/Platform/Foundation/Base/Error.h"
#include "Tessel/Platform/Foundation/Base/Export.h"
#include "Tessel/icalendar/CGICalendarObject.h"

#include <cstddef>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace Tessel {

/// iCalendar text (RFC 5545) as a tree, and back. The parser is lenient: no text is refused, values
/// are not unescaped, quotes are not interpreted, names are case-sensitive. What it makes of
/// unusual text:
/// - Only a line feed ends a line. A value folded across CR LF keeps a carriage return at each
/// fold.
/// - A continuation with no line before it is dropped.
/// - END closes the innermost open component whatever it names; with nothing open it is ignored.
/// - A line without a colon, also an empty one, is a property with neither name nor value.
/// - Properties outside every component are dropped; components still open at the end stay.
/// - A parameter name that is repeated keeps its first position and its last value.
///
/// A tree parsed from text shares one copy of that text; any node that is kept keeps that copy.
/// A calendar is used by one thread at a time; separate calendars are independent.
class TESSEL_EXPORT CGICalendar {
public:
    std::vector<std::shared_ptr<CGICalendarObject>> objects; ///< null entries are passed over
    /// The components open during a parse, the innermost last. Empty otherwise.
    std::vector<std::shared_ptr<CGICalendarComponent>> parserStack;

    /// A new random UUID, upper-case with hyphens.
    static std::string UUID();
    /// A calendar with the objects of the text; none when it is absent.
    static std::shared_ptr<CGICalendar> initWithString(std::optional<std::string> text);
    /// A calendar with the objects of the file; none when it cannot be read.
    static std::shared_ptr<CGICalendar> initWithPath(const std::filesystem::path& path);

    void addObject(std::shared_ptr<CGICalendarObject> object); ///< appends
    /// Throws `std::out_of_range` past the end.
    std::shared_ptr<CGICalendarObject> objectAtIndex(std::size_t index) const;

    /// An error for callers that want to report a faulty line: domain "skavegeirmi", code -1, the
    /// line's text under both "ContentLine" and "LineNumber". The number is not kept.
    Error createErrorAt(int lineNumber, std::string_view lineString) const;

    /// Replaces `objects` by those of the text, any bytes. Hand a string over with `std::move` to
    /// save its copy. False only for an absent text. The error is never written.
    bool parseWithString(std::optional<std::string> text, Error* error = nullptr);
    /// The same for a text of others: false, with `objects` cleared, when it holds more than
    /// `mostNodes` components, properties and parameters, each of which takes some 120 bytes of
    /// memory and can be written in two. Those without name and value (empty lines) do not count.
    bool parseWithLimit(std::string text, std::size_t mostNodes);
    /// Parses a file. False without a change when it cannot be read, is no ordinary file or does
    /// not fit into memory (`Limits::fileBytes`); false with `objects` cleared when it is not UTF-8
    /// or its tree does not fit. The error is never written.
    bool parseWithPath(const std::filesystem::path& path, Error* error = nullptr);

    std::shared_ptr<CGICalendarComponent> peekParserObject() const; ///< null with nothing open
    /// Opens a component within the innermost.
    void pushParserObject(std::shared_ptr<CGICalendarComponent> component);
    /// Removes and returns the innermost; null with nothing open.
    std::shared_ptr<CGICalendarComponent> popParserObject();
    void clearParserObjects(); ///< leaves nothing open

    /// The text of all objects in order; see `CGICalendarComponent::description`.
    std::string description() const;
    /// Writes `description` to a file, which holds either its old or all of its new content. False
    /// when the text is not UTF-8 or the file cannot be written.
    bool writeToFile(const std::filesystem::path& path) const;
};

} // namespace Tessel
