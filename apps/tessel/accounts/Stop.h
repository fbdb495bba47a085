#pragma once

#include <Tessel/TesselSession.h>

#include <exception>
#include <string>

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

/// Ends a command with a reason for the user.
class Stop final : public std::exception {
public:
    Stop(Failure failure, int status)
        : failure_(std::move(failure))
        , status_(status)
    {
    }
    /// With the status that a failure's kind means.
    explicit Stop(Failure failure);

    static Stop usage(std::string reason);
    static Stop missing(std::string reason);
    static Stop storage(std::string reason);

    const Failure& failure() const { return failure_; }
    int status() const { return status_; }
    const char* what() const noexcept override { return failure_.reason.c_str(); }

private:
    Failure failure_;
    int status_;
};

/// A failure's reason on one line, in the words of the command line.
std::string reasonOf(const Failure& failure);

} // namespace Tessel::App
