#pragma once

#include "Tessel/CaldavLibrary/Models/MRVCalendar.h"
#include "Tessel/CaldavLibrary/Operation/MRVOperation.h"

#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace Tessel {

/// Lists the calendars under the account's calendar home with one PROPFIND (RFC 4791, 4.2). An
/// account without a calendar home is a programming error that stops the process.
class MRVGetCalendarsOperation final : public MRVOperation {
public:
    using Calendars = std::optional<std::vector<std::shared_ptr<MRVCalendar>>>;
    using CompletionHandler = std::function<void(Calendars, std::optional<Error>)>;

    MRVGetCalendarsOperation(std::shared_ptr<MRVClient> client,
        std::shared_ptr<MRVAccountInfoProvider> accountInfoProvider, CompletionHandler completion);

    /// Called once with the list, absent when the answer is no listing; never after a transport
    /// error.
    CompletionHandler completionHandler;

    void main() override;

private:
    void read(const Data& data);
};

} // namespace Tessel
