#pragma once

#include "Tessel/CaldavLibrary/Models/MRVNotificationInfo.h"
#include "Tessel/CaldavLibrary/Parsers/MRVParser.h"

#include <memory>
#include <optional>
#include <vector>

namespace Tessel {

/// Reads the listing of the notification collection.
class MRVNotificationInfoParser final : public MRVParser {
public:
    using MRVParser::MRVParser;

    /// The invitations and replies in document order; collections and resources of another kind are
    /// passed over. None when there is not one.
    std::optional<std::vector<std::shared_ptr<MRVNotificationInfo>>> parseInfo() const;
};

} // namespace Tessel
