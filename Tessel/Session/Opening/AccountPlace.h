#pragma once

#include "Tessel/Platform/Foundation/Base/Export.h"

#include <optional>
#include <string>
#include <vector>

namespace Tessel {

/// Where an account lives on its server, as discovery found it. All URLs are absolute.
struct TESSEL_EXPORT AccountPlace {
    std::string principal; ///< who the user is (RFC 5397); empty where the server names nobody
    std::vector<std::string> homes; ///< collections that hold calendars (RFC 4791, 6.2.1)
    std::optional<std::string> notifications = {}; ///< collection of sharing notifications
    std::optional<std::string> outbox = {}; ///< RFC 6638, 2.1.1
    std::vector<std::string> addresses = {}; ///< of the user, such as "mailto:alice@example.com"
    /// What the server says that it speaks, in its DAV header field (RFC 4918, 10.1), such as
    /// "calendar-access".
    std::vector<std::string> features = {};

    bool offers(const std::string& feature) const; ///< whether `features` has it
};

} // namespace Tessel
