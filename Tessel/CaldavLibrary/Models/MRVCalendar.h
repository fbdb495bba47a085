#pragma once

#include "Tessel/CaldavLibrary/Models/MRVAccount.h"
#include "Tessel/CaldavLibrary/Models/MRVCalendarComponents.h"
#include "Tessel/CaldavLibrary/Models/MRVCalendarPrivileges.h"
#include "Tessel/CaldavLibrary/Models/MRVCalendarSharingMode.h"
#include "Tessel/CaldavLibrary/Models/MRVSharee.h"
#include "Tessel/Platform/Foundation/Time/TimeZone.h"

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace Tessel {

/// A calendar collection as a listing read it, or as the host describes one that it wants created.
/// The library does not change a calendar after handing it out. Calendars are matched by `href` and
/// changes detected by `cTag`; a whole calendar is never compared.
struct MRVCalendar {
    /// The keys under which `MRVClient::update` changes a calendar's properties.
    static constexpr const char* propertyColor = "color";
    static constexpr const char* propertyOrder = "order"; ///< the key of calendar-order

    const std::string calID; ///< the account's identifier followed directly by `href`
    const std::string href; ///< the collection's path as the server gave it
    const std::string displayName; ///< displayname (RFC 4918, 15.2)
    const std::string cTag; ///< changes whenever anything in the collection does
    std::optional<std::string> desc = {}; ///< calendar-description (RFC 4791, 5.2.1)
    std::optional<std::string> order = {}; ///< calendar-order, kept as text
    std::optional<std::string> color = {}; ///< calendar-color exactly as the server sent it
    std::optional<std::string> scale = {}; ///< for the host; a listing never fills it
    const std::string syncToken; ///< RFC 6578, 4
    const std::string owner; ///< href of the owner's principal
    std::optional<std::string> organizerName = {}; ///< who shares the calendar with the user
    std::optional<std::string> organizerEmail
        = {}; ///< that person's address as sent, "mailto:" kept
    std::optional<std::string> prePublishURL = {}; ///< pre-publish-url as sent
    const TimeZone timeZone = TimeZone::UTC(); ///< calendar-timezone (RFC 4791, 5.2.2)
    /// Whom it is shared with; absent where the server names nobody.
    std::optional<std::vector<std::shared_ptr<MRVSharee>>> sharees = {};
    std::shared_ptr<MRVAccount> account; ///< in whose home it was listed
    std::optional<MRVCalendarComponents> supportedComponents = {}; ///< what it may hold
    std::optional<MRVCalendarPrivileges> privileges = {}; ///< what the user may do with it
    /// Allowed-sharing-modes; absent where the server has none.
    std::optional<MRVCalendarSharingMode> sharingModes = {};
    bool includeInBusyTime = false; ///< schedule-calendar-transp is opaque (RFC 6638, 9.1)
    bool isShared = false; ///< shared with the user, or by the user
};

} // namespace Tessel
