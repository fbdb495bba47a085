#pragma once

#include "Tessel/CaldavLibrary/Operation/MRVOperation.h"
#include "Tessel/Platform/Foundation/Time/Date.h"
#include "Tessel/Platform/Foundation/Time/TimeZone.h"

#include <optional>

namespace Tessel {

/// Sends one fixed calendar-query REPORT to the account's server URL and logs the events of the
/// answer; nobody is told of them. The request does not depend on the dates: its range is always
/// 2006-01-04 to 2006-01-05, and its body is not well-formed XML.
class TESSEL_EXPORT MRVGetEventsByRange final : public MRVOperation {
public:
    Date startDate; ///< not sent
    Date endDate; ///< not sent
    std::optional<TimeZone> timeZone; ///< not sent

    void main() override; ///< sends the query
};

} // namespace Tessel
