#pragma once

#include "CaldavLibrary/Models/MRVAlarm.h"
#include "CaldavLibrary/Models/MRVAttendee.h"
#include "CaldavLibrary/Models/MRVCalendar.h"
#include "Platform/Foundation/Date.h"
#include "Platform/Foundation/Export.h"
#include "Platform/Foundation/TimeZone.h"

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace Tessel {

/// One event resource, or one instance of it. Texts are raw iCalendar text: nothing is unescaped
/// on reading or escaped on writing. Events are matched by `href`, changes detected by `eTag`.
struct TESSEL_EXPORT MRVEvent {
    std::string uid;
    const std::string href; ///< the resource's path as the server gave it
    const std::string eTag; ///< as the server gave it, quotes included
    std::optional<std::string> scheduleTag = {}; ///< RFC 6638, 3.2.10
    const std::string calendarData; ///< the text that the event was read from, empty for a new one
    const std::optional<std::string> desc = {};
    const std::string status;
    const std::string summary;
    std::optional<std::string> recurrenceId = {}; ///< of an instance; absent for the master
    const Date createdDate;
    const Date lastModifiedDate;
    const Date startDate;
    const Date endDate;
    const std::optional<TimeZone> startTimeZone = {}; ///< absent for UTC and floating times
    const std::optional<TimeZone> endTimeZone = {};
    std::optional<std::vector<std::shared_ptr<MRVAttendee>>> attendees = {}; ///< organizer included
    std::optional<std::vector<std::shared_ptr<MRVEvent>>> occurrences
        = {}; ///< overridden instances
    std::optional<std::vector<std::shared_ptr<MRVAlarm>>> alarms = {};
    std::optional<std::string> recurRule = {}; ///< the RRULE value as written
    const std::shared_ptr<MRVCalendar> calendar;
    const bool allDay = false; ///< DATE values rather than DATE-TIME
};

} // namespace Tessel
