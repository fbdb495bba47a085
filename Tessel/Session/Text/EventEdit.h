#pragma once

#include "Tessel/Session/Outcome/Result.h"
#include "Tessel/Session/Text/EventValues.h"

#include <concepts>
#include <initializer_list>

namespace Tessel {

struct Cleared { }; ///< the type of `cleared`
/// Takes a property away: `EventEdit {.location = cleared}`.
inline constexpr Cleared cleared;

/// What an edit does with one property: it leaves it, which is the default, sets it or clears it.
template <class T> class Change {
public:
    Change() = default;
    /// Clears it.
    Change(Cleared)
        : isCleared_(true)
    {
    }
    /// Sets it.
    template <class U>
    requires std::convertible_to<U, T> Change(U&& value)
        : value_(std::forward<U>(value))
    {
    }

    bool isLeft() const { return !isCleared_ && !value_; } ///< neither set nor cleared
    bool isCleared() const { return isCleared_; } ///< to be taken away
    /// What is set, or null.
    const T* set() const { return value_ ? &*value_ : nullptr; }

    friend bool operator==(const Change&, const Change&) = default;

private:
    bool isCleared_ = false;
    std::optional<T> value_;
};

/// `Change` of a list: `.alarms = {{15min}}`, `.categories = {"Work", "Travel"}`.
template <class E> class Change<std::vector<E>> {
public:
    Change() = default;
    /// As a list of none.
    Change(Cleared)
        : value_(std::in_place)
    {
    }
    /// Sets it to these.
    Change(std::initializer_list<E> values)
        : value_(values)
    {
    }
    /// Sets it to these.
    Change(std::vector<E> values)
        : value_(std::move(values))
    {
    }

    bool isLeft() const { return !value_; } ///< neither set nor cleared
    /// Set to none.
    bool isCleared() const { return value_ && value_->empty(); }
    /// What is set, or null.
    const std::vector<E>* set() const { return value_ ? &*value_ : nullptr; }

    friend bool operator==(const Change&, const Change&) = default;

private:
    std::optional<std::vector<E>> value_;
};

/// A set of changes to an event, as a value: it can be kept, and applied again to a newer text.
/// What is not named stays as it is.
///
/// Texts are UTF-8; a line end in one may be of any kind. Control characters other than the tab,
/// which RFC 5545 does not allow, are left out when they are written. An empty text is as cleared.
struct TESSEL_EXPORT EventEdit {
    /// The instance of a series that is meant, by when it would begin according to the series; none
    /// for all of it. A session and an outbox refuse one that the series has not;
    /// `EventText::apply`, which reads no rules, only one that was taken away already.
    std::optional<EventMoment> instance = {};
    /// Also all instances that follow.
    bool andFollowing = false;
    /// Takes the instance away, and those that follow where that is said; all else is left aside.
    bool isRemoval = false;

    Change<std::string> summary = {}; ///< SUMMARY
    Change<std::string> description = {}; ///< DESCRIPTION
    Change<std::string> location = {}; ///< LOCATION
    Change<std::string> url = {}; ///< URL
    Change<std::string> status = {}; ///< STATUS: "TENTATIVE", "CONFIRMED" or "CANCELLED"
    Change<std::vector<std::string>> categories = {}; ///< all CATEGORIES

    /// A new start keeps the length, unless there is a new end. A day for what lasts all day; a
    /// timed event that becomes one lasts as many days as it touched, the other way round an hour.
    /// A series moves whole: its exceptions, its end and what it holds instead of single instances
    /// follow, and a weekly rule its days. An event must have a start: it cannot be cleared.
    Change<EventMoment> start = {};
    /// Of days the one after the last. Written as DURATION where the event has that.
    Change<EventMoment> end = {};

    /// RRULE's value, such as "FREQ=WEEKLY;COUNT=10". With a rule go the exceptions, and what the
    /// series holds instead of single instances, of the days that the new one does not give.
    /// Cleared, the event takes place once, at its start: all of these go, and further instances
    /// and exceptions but for those that are set.
    Change<std::string> rule = {};
    /// Further instances, RDATE. What is different on one that is not there any more goes with it.
    Change<std::vector<EventMoment>> dates = {};
    Change<std::vector<EventMoment>> exceptions = {}; ///< instances to leave out, EXDATE

    Change<EventAttendee> organizer = {}; ///< who has called the event
    /// Added, or changed in what is not empty where the address takes part.
    std::vector<EventAttendee> attendees = {};
    std::vector<std::string> removedAttendees = {}; ///< addresses

    /// All alarms there are to be; those that stand there already stay as they are.
    Change<std::vector<EventAlarm>> alarms = {};
    std::vector<EventAlarm> addedAlarms = {}; ///< one that stands there already is not added again
    std::vector<EventAlarm> removedAlarms = {}; ///< those that are not there are no error

    /// The edit as text, to be kept, and read again.
    std::string text() const;
    static Result<EventEdit> read(std::string text); ///< `malformed` for what `text` did not write

    friend bool operator==(const EventEdit&, const EventEdit&) = default;
};

} // namespace Tessel
