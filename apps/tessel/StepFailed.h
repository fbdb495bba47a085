#pragma once

#include <optional>
#include <stdexcept>
#include <string>

namespace Tessel::App {

/// A step of a command that came to nothing.
struct StepFailed : std::runtime_error {
    StepFailed(std::string step, const std::string& why, std::optional<std::string> lastWord)
        : std::runtime_error(
            step + ": " + why + (lastWord ? "; the server's last word: " + *lastWord : ""))
        , step(std::move(step))
        , lastWord(std::move(lastWord))
    {
    }

    std::string step;
    std::optional<std::string> lastWord; ///< what the server, or the transport, said last
};

/// The command's time is over, but the library may still be at work on the step.
struct StepTimedOut : StepFailed {
    using StepFailed::StepFailed;
};

} // namespace Tessel::App
