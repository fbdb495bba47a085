#pragma once

#include <optional>
#include <string>

namespace Tessel::App {

/// Asks on the terminal, which does not show what is typed. None where there is no terminal.
std::optional<std::string> askForPassword(const std::string& question);

/// Has the terminal show what is typed again, if somebody is being asked; from any thread.
void endPrompt();

} // namespace Tessel::App
