#pragma once

#include "Tessel/Session/Exchange/DavAnswer.h"
#include "Tessel/Session/Sharing/Sharee.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace Tessel {

/// Who has a calendar, as a PROPFIND of it tells.
struct ShareList {
    std::vector<Sharee> sharees;
    std::string displayName; ///< of the calendar
    bool canBeShared = false; ///< by this user: the server lists modes of sharing

    static ShareList read(const DavResponse& response);

    /// Whom an address stands for; null for nobody.
    const Sharee* find(std::string_view address) const;

    static const char* const propfind;
};

/// The access that an element of cs:access stands for; none for "no-access", as Cyrus writes it
/// into the notification of a share that was withdrawn.
std::optional<ShareAccess> accessIn(const GDataXMLElement& parent);

/// An address as servers want it: a URI.
std::string addressURI(const std::string& address);

} // namespace Tessel
