#pragma once

#include "Tessel/Session/Outcome/Result.h"

#include <optional>
#include <string>
#include <vector>

namespace Tessel {

enum class ShareAccess { read, readWrite };

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
    ShareAccess access = ShareAccess::read;
};

/// Whom a calendar is shared with.
struct Sharee {
    /// As the server writes it, which may be another one than was given: Cyrus keeps the user and
    /// forgets the domain, so that "bob@example.com" is listed as "mailto:bob@internal".
    std::string address;
    std::string name; ///< empty where the server gives none
    ShareAccess access = ShareAccess::read;
    InviteState state = InviteState::open;

    friend bool operator==(const Sharee&, const Sharee&) = default;
};

/// What became of one address.
struct ShareeOutcome {
    std::string address; ///< as it was given
    Outcome outcome = {};
    std::optional<Sharee> sharee = {}; ///< as the server lists it; none where it does not
};

using ShareeOutcomes = std::vector<ShareeOutcome>;

} // namespace Tessel
