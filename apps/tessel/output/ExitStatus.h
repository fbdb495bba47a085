#pragma once

namespace Tessel::App {

/// What the process says when it ends.
enum ExitStatus {
    done = 0,
    refused = 1, ///< by the server, or there is no such thing
    usage = 2,
    noAnswer = 3, ///< in time, or not at all
    storage = 4,
    donePartly = 5,
    interrupted = 128, ///< and the number of the signal
};

} // namespace Tessel::App
