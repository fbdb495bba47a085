#pragma once

#include "Tessel/CaldavLibrary/Models/MRVCalendar.h"
#include "Tessel/CaldavLibrary/Operation/MRVOperation.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace Tessel {

/// Makes a calendar collection with MKCALENDAR (RFC 4791, 5.3.1): at `calendar->href`, or at a new
/// name under the account's calendar home when that is empty (the home must then be known).
///
/// The request carries the display name, description, order, colour, components and time zone of
/// the calendar, each when it is there. A calendar whose zone has no definition is made without a
/// time zone; a listing then leaves it out unless the server adds one.
class MRVCreateCalendarOperation final : public MRVOperation {
public:
    std::shared_ptr<MRVCalendar> calendar;
    /// Always called once: without an error when the server answers 201, else with the transport's
    /// error or one of the domain "HTTP" whose code is an `MRVStatusCode`.
    std::function<void(std::optional<Error>)> completionHandler;

    void main() override;

private:
    std::string collectionURL() const;
};

} // namespace Tessel
