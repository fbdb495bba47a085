#pragma once

#include <CLI/CLI.hpp>

#include <string>

namespace Tessel::App {

// What is installed beside the tool, made of the same definition as its help.

/// The manual page, for section 1.
std::string manualPage(const CLI::App& app, const std::string& version);
std::string bashCompletion(const CLI::App& app);
std::string zshCompletion(const CLI::App& app);

} // namespace Tessel::App
