#pragma once

#include "Tessel/Platform/Foundation/Base/Export.h"
#include "Tessel/icalendar/CGICalendarNodes.h"
#include "Tessel/icalendar/CGICalendarParameter.h"
#include "Tessel/icalendar/CGICalendarValue.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace Tessel {

/// A property of a component (RFC 5545, 3.5): a name, ordered parameters and a raw value.
/// Several parameters may share a name: look-ups by name act on the first. A parameter without a
/// name, or with an empty one, is found by no name.
class TESSEL_EXPORT CGICalendarProperty : public CGICalendarValue {
public:
    /// In order of output. Null entries are passed over.
    CGICalendarNodes<CGICalendarParameter> parameters;

    /// Appends, also when a parameter of that name exists.
    void addParameter(std::shared_ptr<CGICalendarParameter> parameter);
    /// Throws `std::out_of_range` past the end.
    std::shared_ptr<CGICalendarParameter> parameterAtIndex(std::size_t index) const;
    /// The first parameter of that name, or null.
    std::shared_ptr<CGICalendarParameter> parameterForName(std::string_view name) const;
    /// The names of all parameters in order, duplicates kept; none for a parameter without a name.
    std::vector<std::optional<std::string>> allParameterKeys() const;

    /// The raw value of the first parameter of that name; valid until it is set.
    std::optional<std::string_view> parameterValueForName(std::string_view name) const;
    /// The same as a date, `dateValue`.
    std::optional<Date> parameterDateForName(std::string_view name) const;
    std::int64_t parameterIntegerForName(std::string_view name) const; ///< 0 when missing
    float parameterFloatForName(std::string_view name) const; ///< 0 when missing

    /// Gives the first parameter of that name the value; when there is none a new one is appended.
    void setParameterValue(std::optional<std::string_view> value, std::string_view name);
    /// `setParameterValue` with the object's text form.
    void setParameterObject(const auto& object, std::string_view name)
    {
        setParameterValue(textualDescription(object), name);
    }
    /// `setParameterValue` with the date's iCalendar form.
    void setParameterDate(const Date& date, std::string_view name);
    /// `setParameterValue` with a decimal number.
    void setParameterInteger(std::int64_t number, std::string_view name);
    /// `setParameterValue` with a decimal number.
    void setParameterFloat(float number, std::string_view name);

    /// Whether a parameter of that name exists; if so this call REMOVES the first one. To test
    /// only, use `parameterForName`.
    bool hasParameterForName(std::string_view name);
    /// Removes the first parameter of that name, if any.
    void removeParameterForName(std::string_view name);

    /// The participation statuses by index, "" first (RFC 5545, 3.2.12).
    static const std::array<std::string_view, 8>& participationStatusStrings();
    /// Sets the value to the status at that index; an index outside the table changes nothing.
    void setParticipationStatus(std::int64_t index);
    /// The index of the value in the table; 0 when the value is absent or not in it.
    std::int64_t participationStatus() const;

    /// Folds a line (RFC 5545, 3.1) into pieces of 75 UTF-16 code units joined by CR LF and a
    /// space; a line of 75 units or fewer is returned unchanged. A code point is never cut: where a
    /// piece would end within a surrogate pair it takes the whole pair. When the length is a
    /// multiple of 75 above 75 the LAST 75 UNITS ARE DROPPED and the text ends with CR LF and a
    /// space. Bytes that are not UTF-8 count by their class: a continuation byte nothing, a lead
    /// byte of four two, any other one.
    static std::string foldPropertyLine(std::string_view line);

    /// The text line, "NAME;PARAMETER=value:value", folded and ended by a line feed. Nothing is
    /// escaped: a value with a line feed in it breaks the line.
    std::string description() const;
    /// Appends what `description` returns.
    virtual void appendDescription(std::string& text) const;

protected:
    /// Appends the line without folding and without its end.
    void appendLine(std::string& text) const;
};

} // namespace Tessel
