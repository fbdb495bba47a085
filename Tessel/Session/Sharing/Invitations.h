#pragma once

#include "Tessel/Session/Exchange/Channel.h"
#include "Tessel/Session/Opening/AccountPlace.h"
#include "Tessel/Session/Sharing/Invitation.h"

#include <memory>
#include <string>
#include <vector>

namespace Tessel {

/// What lies in the account's collection of notifications, oldest first.
void listInvitations(const std::shared_ptr<Channel>& channel, const AccountPlace& account,
    std::shared_ptr<PendingCall<std::vector<Invitation>>> call);

/// Accepts, then looks for the calendar in the account's homes and gives its place: so a lost
/// answer makes no difference.
void acceptInvitation(const std::shared_ptr<Channel>& channel, const AccountPlace& account,
    const Invitation& invitation, std::shared_ptr<PendingCall<std::string>> call);

void declineInvitation(const std::shared_ptr<Channel>& channel, const AccountPlace& account,
    const Invitation& invitation, std::shared_ptr<PendingCall<void>> call);

/// Deletes the notification; done too when it is gone.
void dismissInvitation(const std::shared_ptr<Channel>& channel, const Invitation& invitation,
    std::shared_ptr<PendingCall<void>> call);

} // namespace Tessel
