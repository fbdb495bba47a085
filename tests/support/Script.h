#pragma once

#include "Platform/Foundation/Error.h"

#include <chrono>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace Tessel::Test {

/// What a request must look like. Only what is stated is checked.
struct ExpectedRequest {
    std::string method;
    std::string path; ///< with its query, as it goes on the wire
    std::vector<std::pair<std::string, std::optional<std::string>>> fields; ///< any value when none
    std::vector<std::string> absentFields;
    std::optional<std::string> body;
    std::vector<std::string> bodyParts; ///< texts that the body holds
};

/// One thing that a server does while it answers.
struct AnswerStep {
    enum class Kind { send, delay, trickle, close, reset, stall };
    Kind kind;
    std::string bytes = {};
    std::chrono::milliseconds time {};
};

struct ScriptedAnswer {
    std::vector<AnswerStep> steps;
    bool isVerbatim = false; ///< no Content-Length is added
    // For `ScriptedTransport` only:
    std::optional<Error> error;
    bool isHeld = false;
    bool isNotHTTP = false;
    bool hasNoResponse = false;

    /// The bytes of all steps in a row.
    std::string bytes() const;
};

struct ScriptedExchange {
    std::string title;
    ExpectedRequest request;
    ScriptedAnswer answer;
    bool repeats = false;
};

/// Requests that are expected, and their answers, as they would be seen on the wire:
///
///     # A comment. "@ unordered" up here: requests may come in any order.
///     == the title of an exchange
///     > PROPFIND /home/
///     > Depth: 1                  (this value)
///     > Content-Type: *           (any value)
///     > !Authorization            (no such field)
///     >
///     > <body/>                   (exactly this body; no check without these lines)
///     < HTTP/1.1 207 Multi-Status
///     < Content-Type: text/xml
///     <
///     < <multistatus/>
///
/// Lines of a body are joined by LF, without one at the end. A line that starts with `>|` or `<|`
/// is appended as it is, without LF, with \r \n \t \\ and \xHH for bytes. A Content-Length is added
/// where the head has neither that nor Transfer-Encoding. `{{base}}` is the scheme, host and port
/// under which the request came. In an exchange may stand:
///
///     @ repeat                    any number of such requests
///     @ contains TEXT             the request's body holds TEXT; may be repeated
///     @ verbatim                  the answer has no Content-Length beyond what is written
///     @ delay 20ms                between two lines of the answer: wait
///     @ trickle 5ms               from here on one byte at a time, with this pause
///     @ close, @ reset, @ stall   from here on: end the connection, reset it, keep it silent
///     @ error 4 TEXT              transport: fails with an `MNetworkErrorCode`
///     @ hold                      transport: answers after `release`
///     @ not-http, @ no-response   transport: another kind of response, or none
struct Script {
    bool isUnordered = false;
    std::vector<ScriptedExchange> exchanges;

    /// Both throw `std::runtime_error` that names the line which is wrong.
    static Script parse(std::string_view text);
    static Script load(const std::string& path);

    /// The script with only the exchange of this title, which must exist.
    Script only(std::string_view title) const;
};

} // namespace Tessel::Test
