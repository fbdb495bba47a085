#pragma once

#include "Tessel/Session/Outcome/Result.h"

#include <optional>
#include <string>
#include <vector>

namespace Tessel {

enum class ShareAccess { read, readWrite }; ///< what a sharee may do

/// Where an invitation stands.
enum class InviteState {
    open, ///< not answered
    accepted,
    declined,
    invalid, ///< the server knows nobody of that address
};

/// Whom to share a calendar with.
struct Invitee {
    std::string address; ///< an e-mail address, or a URI such as "mailto:bob@example.com"
    ShareAccess access = ShareAccess::read; ///< to be given
};

/// Whom a calendar is shared with.
struct Sharee {
    /// As the server writes it, which may be another one than was given: Cyrus keeps the user and
    /// forgets the domain, so that "bob@example.com" is listed as "mailto:bob@internal".
    std::string address;
    std::string name; ///< empty where the server gives none
    ShareAccess access = ShareAccess::read; ///< as the server lists it
    InviteState state = InviteState::open; ///< where the invitation stands

    friend bool operator==(const Sharee&, const Sharee&) = default;
};

/// What became of one address.
struct ShareeOutcome {
    std::string address; ///< as it was given
    Outcome outcome = {}; ///< whether the server has done it
    std::optional<Sharee> sharee = {}; ///< as the server lists it; none where it does not
};

using ShareeOutcomes = std::vector<ShareeOutcome>; ///< one for each address, in the order given

} // namespace Tessel
