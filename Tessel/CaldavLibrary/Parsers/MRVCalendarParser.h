#pragma once

#include "Tessel/CaldavLibrary/Models/MRVCalendar.h"
#include "Tessel/CaldavLibrary/Parsers/MRVParser.h"

#include <memory>
#include <optional>
#include <vector>

namespace Tessel {

/// Reads the listing of a calendar home.
///
/// A collection is a calendar when its resource type says so and the server sends all of
/// displayname, getctag, sync-token, supported-calendar-component-set, current-user-privilege-set,
/// owner with an href, and calendar-timezone; one that lacks any of them is left out silently.
/// Programming errors that stop the process: no account; a required element without text; a
/// calendar-timezone from which no zone can be read; a comp without a name; a sharee without href.
class MRVCalendarParser final : public MRVParser {
public:
    using MRVParser::MRVParser;

    /// The calendars in document order, possibly none at all; absent when the answer holds no
    /// response.
    std::optional<std::vector<std::shared_ptr<MRVCalendar>>> parseCalendars() const;

private:
    std::shared_ptr<MRVCalendar> calendar(
        const std::optional<GDataXMLElement>& hrefElement, const GDataXMLElement& prop) const;
};

} // namespace Tessel
