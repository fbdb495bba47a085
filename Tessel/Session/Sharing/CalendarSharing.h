#pragma once

#include "Tessel/Session/Exchange/Channel.h"
#include "Tessel/Session/Opening/AccountPlace.h"
#include "Tessel/Session/Sharing/Sharee.h"

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace Tessel {

// Sharing as calendarserver.org has described it ("Shared and Published Calendars in CalDAV") and
// Cyrus does it. Servers without it are asked for nothing more than shows that.

/// Whom the calendar is shared with.
void listSharees(const std::shared_ptr<Channel>& channel, const AccountPlace& account,
    const std::string& calendar, std::shared_ptr<PendingCall<std::vector<Sharee>>> call);

/// What is to become of the shares of a calendar.
struct ShareChange {
    std::vector<Invitee> invited = {};
    std::vector<std::string> withdrawn = {};
    bool withdrawsAll = false;
};

/// Makes the change, then reads who has the calendar: what that shows is what is told.
void changeSharees(const std::shared_ptr<Channel>& channel, const AccountPlace& account,
    const std::string& calendar, ShareChange change,
    std::shared_ptr<PendingCall<ShareeOutcomes>> call);

/// Whether the server offers sharing at all.
bool offersSharing(const AccountPlace& account);

/// What a call fails with where it does not.
Failure sharingIsNotOffered(std::string_view what);

/// What a call fails with where it does, but not to this user for this calendar.
Failure sharingIsUnsupported(std::string_view what);

} // namespace Tessel
