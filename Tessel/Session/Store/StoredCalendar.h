#pragma once

#include <optional>
#include <string>
#include <vector>

namespace Tessel {

/// The state of a calendar at its server that what is held of it agrees with. Empty texts stand
/// for none: nothing was synced, or the server has no such thing.
struct SyncMark {
    std::string cTag; ///< the collection's ctag
    std::string syncToken; ///< of WebDAV sync (RFC 6578)

    friend bool operator==(const SyncMark&, const SyncMark&) = default;
};

/// A calendar as it was listed, and how far it is synced.
struct StoredCalendar {
    std::string href; ///< as the server lists it
    std::string displayName = {}; ///< may be empty
    std::optional<std::string> description = {}; ///< calendar-description
    std::optional<std::string> color = {}; ///< as the server writes it, such as "#FF2968FF"
    std::optional<std::string> order = {}; ///< as the server writes it: a number
    std::optional<std::string> timeZone = {}; ///< the text of calendar-timezone
    std::vector<std::string> components
        = {}; ///< such as "VEVENT"; empty where the server is silent
    bool isWritable = true; ///< also where the server is silent
    std::vector<std::string> missing = {}; ///< what the server leaves out, for a person
    SyncMark mark = {}; ///< `Store::put` leaves the held one as it is: `Store::apply` sets it

    friend bool operator==(const StoredCalendar&, const StoredCalendar&) = default;
};

} // namespace Tessel
