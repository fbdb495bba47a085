#pragma once

#include "Tessel/CaldavLibrary/Models/MRVNotification.h"
#include "Tessel/CaldavLibrary/Parsers/MRVParser.h"

#include <memory>

namespace Tessel {

/// Reads one resource of the notification collection.
class MRVNotificationParser final : public MRVParser {
public:
    using MRVParser::MRVParser;

    /// Null without a readable `dtstamp`, for an invitation that lacks any of its elements, and for
    /// a reply that does not name who answers and for which calendar. A document that holds both is
    /// a reply.
    std::shared_ptr<MRVNotification> parseNote() const;
};

} // namespace Tessel
