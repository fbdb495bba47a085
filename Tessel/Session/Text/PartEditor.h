#pragma once

#include "Tessel/Session/Text/EventEdit.h"
#include "Tessel/Session/Text/EventPart.h"
#include "Tessel/Session/Text/TextPatch.h"

#include <functional>

namespace Tessel {

/// Changes the lines of one VEVENT by a patch. What has a value already keeps its line as it is;
/// what gets another one keeps its other parameters.
class PartEditor {
public:
    PartEditor(const TextTree& tree, const EventPart& part, TextPatch& patch);

    const EventPart& part() const { return part_; }

    /// An empty text takes the line away, as a cleared one does: libical takes it for an error.
    void setText(std::string_view property, const Change<std::string>& change);
    /// A value that is not escaped.
    void setPlain(std::string_view property, const Change<std::string>& change);
    void setMoment(std::string_view property, const EventMoment& moment);
    void setDuration(const EventDuration& duration);
    void setMoments(std::string_view property, const std::vector<EventMoment>& moments);
    void setCategories(const std::vector<std::string>& categories);
    void setOrganizer(const EventAttendee& organizer);
    void putAttendee(const EventAttendee& attendee);
    void removeAttendee(std::string_view address);
    void setAlarms(const std::vector<EventAlarm>& alarms);
    void addAlarm(const EventAlarm& alarm);
    void removeAlarm(const EventAlarm& alarm);

    void clear(std::string_view property);
    void replace(const TextLine& line, const TextParameters& parameters, std::string_view value);
    void remove(const TextLine& line);
    void add(std::string_view property, const TextParameters& parameters, std::string_view value);
    /// Leaves of a line such as EXDATE what is to stay, periods by their starts, and what cannot be
    /// read; the line goes with the last.
    void keepMoments(const TextLine& line, const std::function<bool(const EventMoment&)>& stays);

    /// Of the properties that make an organizer count SEQUENCE up (RFC 5546, 2.1.4).
    void countUp() { isSignificant_ = true; }
    bool isChanged() const { return isChanged_; }
    /// Writes SEQUENCE, DTSTAMP and LAST-MODIFIED, if anything was changed.
    void finish(const Date& now);

private:
    void set(std::string_view property, const TextParameters& parameters, std::string_view value,
        std::initializer_list<std::string_view> dropped);
    std::string line(
        std::string_view name, const TextParameters& parameters, std::string_view value) const;
    void setAttendee(
        std::string_view property, std::optional<TextLine> line, const EventAttendee& attendee);
    std::string alarmText(const EventAlarm& alarm) const;

    std::string_view lineEnd_;
    EventPart part_;
    TextPatch& patch_;
    TextLine beforeComponents_;
    std::string summary_; ///< as it will be
    bool isChanged_ = false;
    bool isSignificant_ = false;
};

/// Whether `alarm` is the one that `wanted` names.
bool isAlarm(const EventAlarm& alarm, const EventAlarm& wanted);
/// Addresses without "mailto:", e-mail addresses in any case.
bool isSameAddress(std::string_view a, std::string_view b);

} // namespace Tessel
