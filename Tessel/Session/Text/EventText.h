#pragma once

#include "Tessel/Session/Text/EventEdit.h"
#include "Tessel/Session/Text/EventPart.h"
#include "Tessel/Session/Text/TextZones.h"

namespace Tessel {

struct EditedEvent;

/// One calendar object's text (RFC 5545, RFC 4791, 4.1): an event, or a series with what is
/// different on some of its days. Immutable; copying is cheap; may be used from any thread.
class TESSEL_EXPORT EventText {
public:
    /// `malformed` where the text is no calendar or holds no event.
    static Result<EventText> read(std::string text);
    /// A new event with what `edit` sets, at least its start, a new UID and the zones that it
    /// needs. It lasts a day or an hour unless its end is set, or cleared. `malformed` for what
    /// `apply` refuses.
    static Result<EventText> make(const EventEdit& edit, const Date& now = Date());

    const std::string& text() const { return tree_.text(); } ///< the whole calendar object
    const TextTree& tree() const { return tree_; } ///< the same by components and lines

    /// The event or series. Where the text holds single instances of a series only, as somebody
    /// gets who was invited to these, the first of them.
    EventPart main() const;
    /// What is different from the series, by RECURRENCE-ID.
    std::vector<EventPart> overrides() const;
    /// What is different on one day of the series, by when that would begin; none where it is not.
    std::optional<EventPart> overrideOf(const EventMoment& instance) const;
    /// What describes an instance, by its `Instance::component`; `main` where that is no event.
    EventPart part(std::size_t component) const;
    bool isSeries() const; ///< whether it repeats

    std::string uid() const { return main().uid(); } ///< of `main`; one text has one
    /// When a part ends: its DTEND, its start and DURATION, the next day of one that lasts a day,
    /// or else when it starts. None without a start.
    std::optional<EventMoment> end(const EventPart& part) const;
    /// When a moment of this text is, as `instances` counts; days and floating times by the clock
    /// of `here`.
    Date dateOf(const EventMoment& moment, const TimeZone& here = TimeZone::UTC()) const;

    /// The text with the edit made: every byte that the edit does not concern is as it was. Also
    /// changed are DTSTAMP, LAST-MODIFIED and, where RFC 5546, 2.1.4 asks an organizer for it,
    /// SEQUENCE of the parts concerned. In a series, an instance that is different follows in what
    /// it has as the series has it. An edit that changes nothing gives the same text.
    ///
    /// `missing` where the instance was taken away already; `malformed` where a value cannot be
    /// written: text that is no UTF-8, a zone that neither the text nor the system knows, an end
    /// before the start, a rule that is none; `unsupported` for a rule that cannot be divided, or
    /// not at this instance because it was added to it, for one that cannot go with a new start,
    /// and for a single instance that RANGE=THISANDFUTURE makes different with all that follow.
    Result<EditedEvent> apply(const EventEdit& edit, const Date& now = Date()) const;

private:
    explicit EventText(TextTree tree)
        : tree_(std::move(tree))
    {
    }

    TextTree tree_;
};

/// What an edit gives.
struct EditedEvent {
    EventText event; ///< the text with the edit made
    /// Of a series that was divided: the instance and all that follow, a new event with a UID of
    /// its own and RELATED-TO the first.
    std::optional<EventText> following = {};
};

} // namespace Tessel
