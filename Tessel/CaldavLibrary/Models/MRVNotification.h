#pragma once

#include "Tessel/CaldavLibrary/Models/MRVAccount.h"
#include "Tessel/CaldavLibrary/Models/MRVInviteStatus.h"
#include "Tessel/CaldavLibrary/Models/MRVSharedCalendarAccess.h"
#include "Tessel/Platform/Foundation/Time/Date.h"

#include <memory>
#include <optional>
#include <string>

namespace Tessel {

/// An invitation to a calendar that somebody shares with the user, or somebody's answer to an
/// invitation of the user's own.
///
/// A fetched notification has the other party's address in `href` and the resource's path in
/// `identifier`. A fetch matches held notifications by `href` with paths, and deletion sends a
/// request to `href`: a host keeps a COPY WHOSE `href` IS THE PATH,
///
///     MRVNotification held = fetched;
///     held.href = fetched.identifier.value();
///
/// and hands that out and in; otherwise every fetch brings the notification anew and reports it as
/// removed. The other party's address stays in `shareeEmail`.
struct MRVNotification {
    std::shared_ptr<MRVAccount> account; ///< whose collection it lies in
    std::optional<std::string> identifier = {}; ///< the resource's path; a parser leaves it absent
    std::string href; ///< the other party's address as sent: usually a "mailto:" URI, or a path
    std::string hostURL; ///< the shared calendar's path on the sharer's side
    std::string summary; ///< the calendar's name as the invitation gives it
    Date date; ///< of its DTSTAMP
    std::string shareeEmail; ///< `href` without "mailto:"
    std::optional<std::string> uid = {}; ///< of an invitation; what its answer refers to
    std::optional<std::string> organizerCN = {}; ///< the sharer's name, absent in replies
    std::optional<std::string> organizerEmail = {}; ///< the sharer's address as sent, likewise
    MRVInviteStatus status = MRVInviteStatus::noResponse; ///< `deleted`: the share was withdrawn
    bool isReply = false; ///< an answer to an invitation by the user
    MRVSharedCalendarAccess access = MRVSharedCalendarAccess::readOnly; ///< offered; not in replies
};

} // namespace Tessel
