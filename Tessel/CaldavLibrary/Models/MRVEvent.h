#pragma once

#include "Tessel/CaldavLibrary/Models/MRVAlarm.h"
#include "Tessel/CaldavLibrary/Models/MRVAttendee.h"
#include "Tessel/CaldavLibrary/Models/MRVCalendar.h"
#include "Tessel/Platform/Foundation/Base/Export.h"
#include "Tessel/Platform/Foundation/Time/Date.h"
#include "Tessel/Platform/Foundation/Time/TimeZone.h"

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace Tessel {

/// One event resource, or one instance of it. Texts are raw iCalendar text: nothing is unescaped
/// on reading or escaped on writing. Events are matched by `href`, changes detected by `eTag`.
struct TESSEL_EXPORT MRVEvent {
    std::string uid; ///< UID (RFC 5545, 3.8.4.7)
    const std::string href; ///< the resource's path as the server gave it
    const std::string eTag; ///< as the server gave it, quotes included
    std::optional<std::string> scheduleTag = {}; ///< RFC 6638, 3.2.10
    const std::string calendarData; ///< the text that the event was read from, empty for a new one
    const std::optional<std::string> desc = {}; ///< DESCRIPTION
    const std::string status; ///< STATUS
    const std::string summary; ///< SUMMARY
    std::optional<std::string> recurrenceId = {}; ///< of an instance; absent for the master
    const Date createdDate; ///< CREATED
    const Date lastModifiedDate; ///< LAST-MODIFIED
    const Date startDate; ///< DTSTART
    const Date endDate; ///< DTEND; of days the one after the last
    const std::optional<TimeZone> startTimeZone = {}; ///< absent for UTC and floating times
    const std::optional<TimeZone> endTimeZone = {}; ///< likewise
    std::optional<std::vector<std::shared_ptr<MRVAttendee>>> attendees = {}; ///< organizer included
    std::optional<std::vector<std::shared_ptr<MRVEvent>>> occurrences
        = {}; ///< overridden instances
    /// Absent where there are none.
    std::optional<std::vector<std::shared_ptr<MRVAlarm>>> alarms = {};
    std::optional<std::string> recurRule = {}; ///< the RRULE value as written
    const std::shared_ptr<MRVCalendar> calendar; ///< that holds it
    const bool allDay = false; ///< DATE values rather than DATE-TIME

    /// The event as a calendar of its own (RFC 5545, 3.4), with its alarms, its attendees, the
    /// definitions of its time zones and one VEVENT for each of its `occurrences`. Absent for a
    /// timed event that lacks a start or an end zone, as UTC and floating times do. An alarm whose
    /// relative trigger is no finite 64-bit number of seconds stops the process.
    ///
    /// Not written: RECURRENCE-ID (so an occurrence is a second event of its UID), EXDATE, CREATED,
    /// SEQUENCE, LOCATION and whatever else the model does not hold. Attendees are always written
    /// with PARTSTAT=NEEDS-ACTION, DTSTAMP is the creation date, and only `display` alarms have an
    /// ACTION. A fixed alarm time is written in the start zone without naming that; the sign of a
    /// duration stands before every part of it ("-P0DT0H-15M0S"). Dates carry the week-based year
    /// and hours 1-24 (`descriptionICalDateTimeFormat`). The end's zone is defined only when its
    /// offset differs from the start zone's at the moment of writing.
    std::optional<std::string> iCalendarString() const;
};

} // namespace Tessel
