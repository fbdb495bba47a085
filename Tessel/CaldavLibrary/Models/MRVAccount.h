#pragma once

#include "Tessel/CaldavLibrary/Models/MRVAccountType.h"
#include "Tessel/CaldavLibrary/Models/MRVSupportedMethod.h"

#include <optional>
#include <string>
#include <vector>

namespace Tessel {

/// One CalDAV account: who the user is, which server, and the collections that discovery found.
///
/// The host makes it, usually with the first four values only; account discovery fills in the URLs
/// in place, exactly as the server wrote them (usually server-relative paths). One object is shared
/// by every operation of the account without a lock: do not read it between starting discovery and
/// its completion.
struct MRVAccount {
    const std::string identifier; ///< the host's key for the account
    std::string email; ///< of the user, as the host shows it
    /// The base address as the user gave it. Without a scheme, discovery works only where the
    /// server's well-known address redirects: then this becomes "https://", host and port.
    std::string serverURL;
    MRVAccountType accountType = MRVAccountType::general; ///< a server with ways of its own
    std::optional<std::string> principalURL = {}; ///< current-user-principal (RFC 5397, 3)
    std::optional<std::string> calendarHomeURL = {}; ///< calendar-home-set (RFC 4791, 6.2.1)
    std::optional<std::string> scheduleInboxURL = {}; ///< schedule-inbox-URL (RFC 6638, 2.2.1)
    std::optional<std::string> scheduleOutboxURL = {}; ///< schedule-outbox-URL (RFC 6638, 2.1.1)
    std::optional<std::string> scheduleDefaultURL
        = {}; ///< schedule-default-calendar-URL (RFC 6638, 9.2)
    std::optional<std::string> notificationURL = {}; ///< the collection of sharing notifications
    std::optional<std::vector<std::string>> calendarUserAddressSet = {}; ///< RFC 6638, 2.4.1
    /// On the calendar home; empty until discovery has ended.
    MRVSupportedMethod supportedMethod = {};
    std::optional<double> syncInterval = {}; ///< in seconds; kept for the host, never read here
};

} // namespace Tessel
