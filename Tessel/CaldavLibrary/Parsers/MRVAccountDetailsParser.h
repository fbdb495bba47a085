#pragma once

#include "Tessel/CaldavLibrary/Parsers/MRVParser.h"

#include <map>
#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace Tessel {

/// Reads what discovery asks for out of a multistatus answer.
class MRVAccountDetailsParser final : public MRVParser {
public:
    using MRVParser::MRVParser;

    static constexpr const char* principalURLKey = "MRVKeyPrinicipalURL";
    static constexpr const char* calendarHomeURLKey = "MRVKeyCalendarHomeURL";
    static constexpr const char* scheduleInboxURLKey = "MRVKeyScheduleInboxURL";
    static constexpr const char* scheduleOutboxURLKey = "MRVKeyScheduleOutboxURL";
    static constexpr const char* scheduleDefaultURLKey = "MRVKeyScheduleDefaultURL";
    static constexpr const char* calendarAddressSetKey = "MRVKeyCalendarAddrSet";
    static constexpr const char* notificationURLKey = "MRVKeyNotificationURL";

    /// The text of one href, or the texts of all of them for the address set.
    using Value = std::variant<std::string, std::vector<std::string>>;
    using Details = std::map<std::string, Value>;

    /// The properties that the server answered with status 200, by the keys above; a later response
    /// overwrites an earlier one. None without a document.
    std::optional<Details> parseAccountDetails() const;
};

} // namespace Tessel
