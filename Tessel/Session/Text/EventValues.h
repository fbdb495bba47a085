#pragma once

#include "Tessel/Session/Text/EventMoment.h"

#include <vector>

namespace Tessel {

/// Who takes part in an event, or has called it. In an edit, what is empty is left as it is.
struct EventAttendee {
    std::string address; ///< an e-mail address, or a whole URI where it is no "mailto:"
    std::string name = {}; ///< CN
    std::string status = {}; ///< PARTSTAT in capitals: "ACCEPTED", "DECLINED", "TENTATIVE", ...
    std::string role = {}; ///< ROLE in capitals: "REQ-PARTICIPANT", "OPT-PARTICIPANT", ...
    std::string type = {}; ///< CUTYPE in capitals: "INDIVIDUAL", "ROOM", ...
    std::optional<bool> rsvp = {}; ///< whether an answer is asked for

    friend bool operator==(const EventAttendee&, const EventAttendee&) = default;
};

/// A reminder: so long before the start, or at a moment.
struct EventAlarm {
    std::chrono::seconds before {}; ///< negative for one that comes after
    bool isFromEnd = false; ///< `before` counts from the end
    std::optional<Date> at = {}; ///< in place of `before`
    std::string action = "DISPLAY"; ///< in capitals; "AUDIO" and "EMAIL" are the others of the RFC
    /// What it shows. In an edit, empty stands for the summary, and for any text where an alarm is
    /// looked for.
    std::string text = {};
    std::vector<std::string> recipients = {}; ///< of an "EMAIL"

    friend bool operator==(const EventAlarm&, const EventAlarm&) = default;
};

/// What repeats an event.
struct EventRecurrence {
    std::vector<std::string> rules; ///< of RRULE, as written: "FREQ=WEEKLY;BYDAY=MO"
    std::vector<EventMoment> dates; ///< of RDATE: more instances; of periods their starts
    std::vector<EventMoment> exceptions; ///< of EXDATE: instances that are not

    bool isEmpty() const { return rules.empty() && dates.empty(); } ///< nothing repeats it
};

} // namespace Tessel
