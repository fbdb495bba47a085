#pragma once

#include <CLI/CLI.hpp>

#include <string>

namespace Tessel::App {

// What shells complete the tool's words with, in zsh with their descriptions.

std::string bashCompletion(const CLI::App& app);
std::string zshCompletion(const CLI::App& app);

} // namespace Tessel::App
