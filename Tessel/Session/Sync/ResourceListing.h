#pragma once

#include "Tessel/Session/Exchange/Channel.h"
#include "Tessel/Session/Store/Store.h"

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace Tessel {

/// What a server says of a calendar's resources: of all, or of those that have changed.
struct ResourceListing {
    std::vector<HeldTag> present; ///< places and tags
    std::vector<std::string> removed; ///< places; only of changes
    std::string token; ///< from which changes are counted next; only of changes
    bool hasCalendar = false; ///< the calendar itself is among what is described
    bool isTruncated = false; ///< more changes follow from `token` on (RFC 6578, 3.6)
    bool isExpired = false; ///< the token tells the server nothing any more: list all
};

using ListingRead = std::function<void(Result<ResourceListing>)>;

/// All resources with their tags.
void listResources(const std::shared_ptr<Channel>& channel, const std::string& calendar,
    const std::shared_ptr<CallState>& call, ListingRead done);

/// What has changed since `token` (RFC 6578, 3.2).
void listChanges(const std::shared_ptr<Channel>& channel, const std::string& calendar,
    const std::string& token, const std::shared_ptr<CallState>& call, ListingRead done);

} // namespace Tessel
