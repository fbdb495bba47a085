#pragma once

#include "apps/tessel/output/ExitStatus.h"

#include <Tessel/TesselSession.h>

#include <exception>
#include <string>

namespace Tessel::App {

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

} // namespace Tessel::App
