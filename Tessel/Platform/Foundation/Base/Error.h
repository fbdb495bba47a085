#pragma once

#include <map>
#include <string>

namespace Tessel {

/// A failure as it travels through completion closures.
struct Error {
    std::string domain; ///< who defines `code`
    int code = 0; ///< by the numbers of `domain`
    std::string localizedDescription; ///< one sentence for a person
    std::map<std::string, std::string> userInfo = {}; ///< further details, by the domain's keys

    friend bool operator==(const Error&, const Error&) = default;
};

} // namespace Tessel
