#pragma once

#include "Tessel/Session/Text/EventDuration.h"
#include "Tessel/Session/Text/EventValues.h"
#include "Tessel/Session/Text/TextTree.h"

namespace Tessel {

/// One VEVENT of a text, read when it is asked: the event or series itself, or one instance of it
/// that is different. Values are plain: unescaped and unfolded. What is not there or cannot be read
/// is none. Valid as long as a copy of its `TextTree` is.
class TESSEL_EXPORT EventPart {
public:
    /// Of a VEVENT.
    explicit EventPart(const TextComponent& component)
        : component_(component)
    {
    }

    /// Everything else that the event has.
    const TextComponent& component() const { return component_; }

    std::string uid() const; ///< empty where there is none
    std::optional<std::string> summary() const { return text("SUMMARY"); } ///< SUMMARY
    std::optional<std::string> description() const { return text("DESCRIPTION"); } ///< DESCRIPTION
    std::optional<std::string> location() const { return text("LOCATION"); } ///< LOCATION
    std::optional<std::string> url() const; ///< URL
    /// In capitals: "TENTATIVE", "CONFIRMED" or "CANCELLED".
    std::optional<std::string> status() const;
    std::vector<std::string> categories() const; ///< of all CATEGORIES

    std::optional<EventMoment> start() const { return moment("DTSTART"); } ///< DTSTART
    /// DTEND, as written: of days the one after the last. None where there is none or a DURATION;
    /// `EventText::end` knows the end in any case.
    std::optional<EventMoment> writtenEnd() const { return moment("DTEND"); }
    std::optional<EventDuration> duration() const; ///< DURATION
    bool isAllDay() const; ///< it starts on a day, without a time

    EventRecurrence recurrence() const; ///< RRULE, RDATE and EXDATE
    std::optional<EventAttendee> organizer() const; ///< ORGANIZER
    std::vector<EventAttendee> attendees() const; ///< in the order of the text
    std::vector<EventAlarm> alarms() const; ///< without those whose trigger cannot be read

    int sequence() const; ///< 0 where there is none
    /// Of an instance: when it would begin by the series.
    std::optional<EventMoment> recurrenceId() const { return moment("RECURRENCE-ID"); }
    /// Of an instance: whether it stands for all that follow, too (RANGE=THISANDFUTURE).
    bool isThisAndFuture() const;

    /// The first property of that name, as text.
    std::optional<std::string> text(std::string_view property) const;
    std::optional<EventMoment> moment(std::string_view property) const; ///< the same as a moment

private:
    TextComponent component_;
};

/// The parameters with which a moment is written: VALUE=DATE or TZID.
TESSEL_EXPORT TextParameters parametersOf(const EventMoment& moment);
/// The moments of a line such as EXDATE, periods by their starts; those that cannot be read are
/// left out.
TESSEL_EXPORT std::vector<EventMoment> momentsOf(const TextLine& line);
TESSEL_EXPORT EventAttendee attendeeOf(const TextLine& line); ///< of a line ATTENDEE or ORGANIZER
/// Of a VALARM; none where its trigger cannot be read.
TESSEL_EXPORT std::optional<EventAlarm> alarmOf(const TextComponent& alarm);

} // namespace Tessel
