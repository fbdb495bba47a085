#pragma once

#include "Tessel/Platform/Foundation/Base/Error.h"

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
    std::vector<std::pair<std::string, std::string>> fields; ///< any value when "*"
    std::vector<std::string> absentFields;
    std::optional<std::string> body;
    std::vector<std::string> bodyParts; ///< texts that the body holds
};

struct ScriptedAnswer {
    /// What becomes of the connection after the bytes.
    enum class End { keep, close, reset, stall };

    std::string bytes;
    std::chrono::milliseconds pause {}; ///< after each byte
    End end = End::keep;
    // For `ScriptedTransport` only:
    std::optional<Error> error;
    bool isNotHTTP = false;
    bool hasNoResponse = false;
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
///     @ trickle 5                 one byte at a time, with a pause of so many milliseconds
///     @ close, @ reset, @ stall   then end the connection, reset it, keep it silent
///     @ error 4 TEXT              transport: fails with an `MNetworkErrorCode`
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
