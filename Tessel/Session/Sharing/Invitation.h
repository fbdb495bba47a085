#pragma once

#include "Tessel/Platform/Foundation/Time/Date.h"
#include "Tessel/Session/Outcome/Failure.h"
#include "Tessel/Session/Sharing/Sharee.h"

#include <optional>
#include <string>

namespace Tessel {

/// What a server has to tell about sharing; it stays until it is dismissed.
struct Invitation {
    /// What it tells.
    enum class Kind {
        offer, ///< somebody shares a calendar with the user: accept it or decline it
        withdrawal, ///< somebody does not share it any more
        reply, ///< somebody has answered an invitation by the user
        unknown, ///< of another kind, or unreadable: all that can be done is to dismiss it
    };

    std::string place; ///< of the notification itself
    Kind kind = Kind::unknown; ///< what it tells
    std::string uid = {}; ///< what an answer refers to; not in replies
    std::string calendar = {}; ///< place of the shared calendar on its owner's side
    std::string calendarName = {}; ///< may be empty
    std::string owner = {}; ///< address as the server writes it, here often a path
    std::string ownerName = {}; ///< may be empty
    std::string sharee = {}; ///< who was invited, or has answered; likewise
    ShareAccess access = ShareAccess::read; ///< that is offered
    InviteState state = InviteState::open; ///< of a reply
    std::optional<Date> when = {}; ///< none where the server does not say
    std::optional<Failure> failure = {}; ///< of reading it, with which its kind is not known
};

} // namespace Tessel
