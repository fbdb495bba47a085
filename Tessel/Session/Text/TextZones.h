#pragma once

#include "Tessel/Platform/Foundation/Time/TimeZone.h"
#include "Tessel/Session/Text/EventDuration.h"
#include "Tessel/Session/Text/EventMoment.h"
#include "Tessel/Session/Text/TextTree.h"

#include <functional>
#include <map>
#include <set>

namespace Tessel {

/// The zones that the times of a text are in. Each is read when it is first asked for and kept:
/// for one thread at a time.
class TESSEL_EXPORT TextZones {
public:
    /// Of times that are in no text: the zones that the database or Windows knows.
    TextZones() = default;
    /// Reads nothing yet.
    explicit TextZones(TextTree tree)
        : tree_(std::move(tree))
    {
    }

    /// The zone of a TZID: by the text's own VTIMEZONE; where that is missing or cannot be read by
    /// the time-zone database's name, a Windows name, or the database's name that it ends in.
    const std::optional<TimeZone>& zone(const std::string& tzid);
    /// The text's VTIMEZONE of this TZID.
    std::optional<TextComponent> definition(std::string_view tzid);
    /// The TZIDs that lines of the text name, whoever knows them.
    std::set<std::string, std::less<>> used() const;

    /// When a moment is: a day begins at midnight; days and floating times go by the clock of
    /// `here`, and so do times of a zone that nobody knows.
    Date dateOf(const EventMoment& moment, const TimeZone& here = TimeZone::UTC());
    /// What the clock of `like` shows at `moment`, where both are in UTC or a zone. Else its own
    /// local time: days and floating times are the same on every clock.
    std::chrono::local_seconds localAs(const EventMoment& like, const EventMoment& moment);
    /// So long after a moment, on the same clock: days go by that, the rest as time goes by
    /// (RFC 5545, 3.3.6); after a day whole days. In UTC where the clock shows that time twice, and
    /// the second one is meant.
    EventMoment after(const EventMoment& moment, const EventDuration& duration);

private:
    using Definitions = std::map<std::string, TextComponent, std::less<>>;

    std::optional<TextTree> tree_;
    std::optional<Definitions> definitions_;
    std::map<std::string, std::optional<TimeZone>, std::less<>> zones_;
};

/// A VTIMEZONE for a TZID that the database or Windows knows, lines ended by `lineEnd`; empty for
/// any other.
TESSEL_EXPORT std::string zoneDefinition(const std::string& tzid, std::string_view lineEnd);

} // namespace Tessel
