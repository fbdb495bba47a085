#pragma once

#include "Tessel/Platform/Foundation/Base/Export.h"
#include "Tessel/Platform/Foundation/Time/Date.h"
#include "Tessel/icalendar/CGICalendarDate.h"
#include "Tessel/icalendar/CGICalendarDescription.h"
#include "Tessel/icalendar/CGICalendarText.h"

#include <cstdint>
#include <optional>
#include <string_view>

namespace Tessel {

/// A named raw text: the base of properties and parameters. Each text is absent until it is set,
/// and an absent text is not an empty one. Texts are bytes as they stand in a calendar: nothing is
/// escaped, unescaped or changed in case. Views stay valid until the text is set again or the node
/// goes. Nodes are used by one thread at a time.
class TESSEL_EXPORT CGICalendarValue {
public:
    CGICalendarValue() = default;
    CGICalendarValue(const CGICalendarValue&) = delete;
    CGICalendarValue& operator=(const CGICalendarValue&) = delete;
    virtual ~CGICalendarValue() = default;

    /// Carried for the host; the engine does not use it.
    std::optional<std::string_view> type() const { return type_.view(); }
    /// As written; absent until it is set.
    std::optional<std::string_view> name() const { return name_.view(); }
    /// Raw, escapes kept; absent until it is set.
    std::optional<std::string_view> value() const { return value_.view(); }
    /// Carried for the host.
    void setType(std::optional<std::string_view> type) { type_.assign(type); }
    /// Not checked: it is written as it is.
    void setName(std::optional<std::string_view> name) { name_.assign(name); }
    /// Not escaped: it is written as it is.
    void setValue(std::optional<std::string_view> value) { value_.assign(value); }

    /// Whether the text is present and not empty.
    bool hasName() const { return !name_.viewOrEmpty().empty(); }
    /// Whether the value is present and not empty.
    bool hasValue() const { return !value_.viewOrEmpty().empty(); }

    /// Exact, case-sensitive equality; an empty argument equals nothing, not even an empty name.
    bool isName(std::string_view name) const
    {
        return !name.empty() && name == name_.viewOrEmpty();
    }
    /// The same for the value.
    bool isValue(std::string_view value) const
    {
        return !value.empty() && value == value_.viewOrEmpty();
    }

    /// Sets the value to the object's text form.
    void setObject(const auto& object) { setValue(textualDescription(object)); }
    /// Sets the value to the date's iCalendar form (`descriptionICalendar`).
    void setDate(const Date& date);

    /// The value read in the iCalendar form, UTC with "Z"; none for a date without time or a local
    /// time.
    std::optional<Date> dateValue() const;
    /// The leading whole number of the value after blanks, 0 when there is none; a number that does
    /// not fit is the nearest that does.
    std::int64_t integerValue() const;
    /// The leading decimal number of the value after blanks, 0 when there is none.
    float floatValue() const;

protected:
    /// The name, "" when absent.
    std::string_view nameOrEmpty() const { return name_.viewOrEmpty(); }
    /// The value, "" when absent.
    std::string_view valueOrEmpty() const { return value_.viewOrEmpty(); }

private:
    friend class CGICalendarParser;

    CGICalendarText type_;
    CGICalendarText name_;
    CGICalendarText value_;
};

} // namespace Tessel
