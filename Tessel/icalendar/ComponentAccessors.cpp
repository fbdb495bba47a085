#include "Tessel/icalendar/CGICalendarComponent.h"

namespace Tessel {

using Text = std::optional<std::string_view>;
using OptionalDate = std::optional<Date>;
using Component = CGICalendarComponent;

Text Component::notes() const
{
    return propertyValueForName("DESCRIPTION");
}
void Component::setNotes(Text notes)
{
    setPropertyValue(notes, "DESCRIPTION");
}
Text Component::summary() const
{
    return propertyValueForName("SUMMARY");
}
void Component::setSummary(Text summary)
{
    setPropertyValue(summary, "SUMMARY");
}
Text Component::UID() const
{
    return propertyValueForName("UID");
}
void Component::setUID(Text uid)
{
    setPropertyValue(uid, "UID");
}

std::int64_t Component::priority() const
{
    return propertyIntegerForName("PRIORITY");
}
void Component::setPriority(std::int64_t priority)
{
    setPropertyInteger(priority, "PRIORITY");
}
std::int64_t Component::sequenceNumber() const
{
    return propertyIntegerForName("SEQUENCE");
}
void Component::setSequenceNumber(std::int64_t number)
{
    setPropertyInteger(number, "SEQUENCE");
}

OptionalDate Component::completed() const
{
    return propertyDateForName("COMPLETED");
}
void Component::setCompleted(const Date& date)
{
    setPropertyDate(date, "COMPLETED");
}
OptionalDate Component::dateTimeEnd() const
{
    return propertyDateForName("DTEND");
}
void Component::setDateTimeEnd(const Date& date)
{
    setPropertyDate(date, "DTEND");
}
OptionalDate Component::due() const
{
    return propertyDateForName("DUE");
}
void Component::setDue(const Date& date)
{
    setPropertyDate(date, "DUE");
}
OptionalDate Component::dateTimeStart() const
{
    return propertyDateForName("DTSTART");
}
void Component::setDateTimeStart(const Date& date)
{
    setPropertyDate(date, "DTSTART");
}
OptionalDate Component::recurrenceID() const
{
    return propertyDateForName("RECURRENCE-ID");
}
void Component::setRecurrenceID(const Date& date)
{
    setPropertyDate(date, "RECURRENCE-ID");
}
OptionalDate Component::created() const
{
    return propertyDateForName("CREATED");
}
void Component::setCreated(const Date& date)
{
    setPropertyDate(date, "CREATED");
}
OptionalDate Component::dateTimeStamp() const
{
    return propertyDateForName("DTSTAMP");
}
void Component::setDateTimeStamp(const Date& date)
{
    setPropertyDate(date, "DTSTAMP");
}
OptionalDate Component::lastModified() const
{
    return propertyDateForName("LAST-MODIFIED");
}
void Component::setLastModified(const Date& date)
{
    setPropertyDate(date, "LAST-MODIFIED");
}

void Component::incrementSequenceNumber()
{
    const auto number = sequenceNumber();
    if (number != INT64_MAX) setSequenceNumber(number + 1);
}

std::int64_t Component::participationStatus() const
{
    const auto property = propertyForName("PARTSTAT");
    return property ? property->participationStatus() : 0;
}

void Component::setParticipationStatus(std::int64_t index)
{
    if (const auto property = propertyForName("PARTSTAT")) property->setParticipationStatus(index);
}

} // namespace Tessel
