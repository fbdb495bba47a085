#pragma once

#include "Tessel/Session/Exchange/Answer.h"

#include <chrono>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace Tessel {

/// What a server says about a refusal in the body of its answer.
struct ServerWords {
    std::string condition; ///< the local name of the first condition in a DAV:error
    std::string text; ///< of the body without its markup, on one line, at most 1,000 characters

    static ServerWords of(const Answer& answer);
};

/// The moment of Retry-After (RFC 9110, 10.2.3) as a pause from now, at most a day.
std::optional<std::chrono::seconds> retryAfter(const HTTPHeaders& headers);

/// The text on one line: runs of blanks and control characters become one blank, and what is longer
/// than so many characters is cut.
std::string onOneLine(std::string_view text, std::size_t mostCharacters = 1000);

} // namespace Tessel
