#pragma once

#include "Tessel/Platform/Foundation/Base/Export.h"
#include "Tessel/icalendar/CGICalendarNodes.h"
#include "Tessel/icalendar/CGICalendarProperty.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace Tessel {

/// A component of a calendar (RFC 5545, 3.6): properties and child components, both in order of
/// output. Names are compared exactly and several properties may share one: look-ups by name act on
/// the first. A property without a name, or with an empty one, is found by no name.
/// Used by one thread at a time; a component must not come to lie within itself.
class TESSEL_EXPORT CGICalendarComponent {
public:
    /// In order of output. Null entries are passed over.
    std::vector<std::shared_ptr<CGICalendarComponent>> components;
    /// In order of output; null entries are passed over.
    CGICalendarNodes<CGICalendarProperty> properties;

    CGICalendarComponent() = default;
    /// An empty component of that type, such as "VEVENT".
    explicit CGICalendarComponent(std::string_view type) { setType(type); }
    CGICalendarComponent(const CGICalendarComponent&) = delete;
    CGICalendarComponent& operator=(const CGICalendarComponent&) = delete;
    virtual ~CGICalendarComponent();

    /// The same as a shared object.
    static std::shared_ptr<CGICalendarComponent> componentWithType(std::string_view type);

    ///@{
    /// A new component of the type that is named. `event`, `todo`, `journal` and `freebusy` have a
    /// new UID and the present moment as DTSTAMP, all but `freebusy` SEQUENCE 0, `todo` also
    /// CREATED.
    static std::shared_ptr<CGICalendarComponent> event();
    static std::shared_ptr<CGICalendarComponent> todo();
    static std::shared_ptr<CGICalendarComponent> journal();
    static std::shared_ptr<CGICalendarComponent> freebusy();
    static std::shared_ptr<CGICalendarComponent> timezone();
    static std::shared_ptr<CGICalendarComponent> alarm();
    ///@}

    /// The name behind BEGIN and END; absent until it is set.
    std::optional<std::string_view> type() const { return type_.view(); }
    /// As it is to be written: case is kept.
    void setType(std::optional<std::string_view> type) { type_.assign(type); }
    bool isType(std::string_view type) const { return type_.view() == type; } ///< exact
    ///@{
    /// Whether the type is "VEVENT", "VTODO", "VJOURNAL", "VFREEBUSY", "VTIMEZONE" or "VALARM".
    bool isEvent() const { return isType("VEVENT"); }
    bool isTodo() const { return isType("VTODO"); }
    bool isJournal() const { return isType("VJOURNAL"); }
    bool isFreebusy() const { return isType("VFREEBUSY"); }
    bool isTimezone() const { return isType("VTIMEZONE"); }
    bool isAlarm() const { return isType("VALARM"); }
    ///@}

    ///@{
    /// Child components, in order of output. An index past the end throws `std::out_of_range`.
    void addComponent(std::shared_ptr<CGICalendarComponent> component);
    void insertComponent(std::shared_ptr<CGICalendarComponent> component, std::size_t index);
    std::shared_ptr<CGICalendarComponent> componentAtIndex(std::size_t index) const;
    ///@}
    /// Searches by identity.
    std::optional<std::size_t> indexOfComponent(const CGICalendarComponent& component) const;
    /// Removes every occurrence of that object.
    void removeComponent(const CGICalendarComponent& component);
    void removeComponentAtIndex(std::size_t index); ///< throws `std::out_of_range` past the end

    /// Appends, also when a property of that name exists.
    void addProperty(std::shared_ptr<CGICalendarProperty> property);
    /// Throws `std::out_of_range` past the end.
    std::shared_ptr<CGICalendarProperty> propertyAtIndex(std::size_t index) const;
    /// The first property of that name, or null.
    std::shared_ptr<CGICalendarProperty> propertyForName(std::string_view name) const;
    /// The names of all properties in order, duplicates kept; none for a property without a name.
    std::vector<std::optional<std::string>> allPropertyKeys() const;

    /// The raw value of the first property of that name; valid until it is set.
    std::optional<std::string_view> propertyValueForName(std::string_view name) const;
    /// The same as a date, `CGICalendarValue::dateValue`.
    std::optional<Date> propertyDateForName(std::string_view name) const;
    std::int64_t propertyIntegerForName(std::string_view name) const; ///< 0 when missing
    float propertyFloatForName(std::string_view name) const; ///< 0 when missing

    /// Removes the first property of that name, if any.
    void removePropertyForName(std::string_view name);
    /// Whether a property of that name exists; if so this call REMOVES the first one. To test only,
    /// use `propertyForName`.
    bool hasPropertyForName(std::string_view name);

    /// Parameters to set on a property: names and values at the same index belong together. Lists
    /// of unequal length are ignored as a whole.
    using Texts = std::vector<std::string>;

    /// Gives the first property of that name the value; when there is none a new one is appended.
    void setPropertyValue(std::optional<std::string_view> value, std::string_view name,
        const Texts& parameterValues = {}, const Texts& parameterNames = {});
    /// `setPropertyValue` with the object's text form.
    void setPropertyObject(const auto& object, std::string_view name,
        const Texts& parameterValues = {}, const Texts& parameterNames = {})
    {
        setPropertyValue(textualDescription(object), name, parameterValues, parameterNames);
    }
    /// `setPropertyValue` with the date's iCalendar form in UTC.
    void setPropertyDate(const Date& date, std::string_view name, const Texts& parameterValues = {},
        const Texts& parameterNames = {});
    /// `setPropertyValue` with a decimal number.
    void setPropertyInteger(std::int64_t number, std::string_view name,
        const Texts& parameterValues = {}, const Texts& parameterNames = {});
    /// `setPropertyValue` with a decimal number.
    void setPropertyFloat(float number, std::string_view name, const Texts& parameterValues = {},
        const Texts& parameterNames = {});

    ///@{
    /// Common properties by name: the first is read, and set. Dates are read only from, and always
    /// written in, the iCalendar form in UTC ("20240102T090000Z"); a missing number is 0.
    std::optional<std::string_view> notes() const { return propertyValueForName("DESCRIPTION"); }
    void setNotes(std::optional<std::string_view> text) { setPropertyValue(text, "DESCRIPTION"); }
    std::optional<std::string_view> summary() const { return propertyValueForName("SUMMARY"); }
    void setSummary(std::optional<std::string_view> text) { setPropertyValue(text, "SUMMARY"); }
    std::optional<std::string_view> UID() const { return propertyValueForName("UID"); }
    void setUID(std::optional<std::string_view> uid) { setPropertyValue(uid, "UID"); }
    std::int64_t priority() const { return propertyIntegerForName("PRIORITY"); }
    void setPriority(std::int64_t priority) { setPropertyInteger(priority, "PRIORITY"); }
    std::int64_t sequenceNumber() const { return propertyIntegerForName("SEQUENCE"); }
    void setSequenceNumber(std::int64_t number) { setPropertyInteger(number, "SEQUENCE"); }
    std::optional<Date> completed() const { return propertyDateForName("COMPLETED"); }
    void setCompleted(const Date& date) { setPropertyDate(date, "COMPLETED"); }
    std::optional<Date> dateTimeEnd() const { return propertyDateForName("DTEND"); }
    void setDateTimeEnd(const Date& date) { setPropertyDate(date, "DTEND"); }
    std::optional<Date> due() const { return propertyDateForName("DUE"); }
    void setDue(const Date& date) { setPropertyDate(date, "DUE"); }
    std::optional<Date> dateTimeStart() const { return propertyDateForName("DTSTART"); }
    void setDateTimeStart(const Date& date) { setPropertyDate(date, "DTSTART"); }
    std::optional<Date> recurrenceID() const { return propertyDateForName("RECURRENCE-ID"); }
    void setRecurrenceID(const Date& date) { setPropertyDate(date, "RECURRENCE-ID"); }
    std::optional<Date> created() const { return propertyDateForName("CREATED"); }
    void setCreated(const Date& date) { setPropertyDate(date, "CREATED"); }
    std::optional<Date> dateTimeStamp() const { return propertyDateForName("DTSTAMP"); }
    void setDateTimeStamp(const Date& date) { setPropertyDate(date, "DTSTAMP"); }
    std::optional<Date> lastModified() const { return propertyDateForName("LAST-MODIFIED"); }
    void setLastModified(const Date& date) { setPropertyDate(date, "LAST-MODIFIED"); }
    ///@}

    /// Adds one to SEQUENCE, which counts as 0 when it is missing.
    void incrementSequenceNumber();

    /// The status of the component's own PROPERTY named PARTSTAT (not of an attendee's parameter):
    /// 0 without such a property. Setting does nothing without one.
    std::int64_t participationStatus() const;
    /// An index outside `CGICalendarProperty::participationStatusStrings` changes nothing.
    void setParticipationStatus(std::int64_t index);

    /// "BEGIN:" and the type, the properties, then the children, "END:" and the type; an absent
    /// type is written "(null)". Lines end with a line feed, only folds hold a carriage return.
    std::string description() const;
    /// Appends what `description` returns.
    void appendDescription(std::string& text) const;

private:
    friend class CGICalendarParser;

    CGICalendarText type_;
};

} // namespace Tessel
