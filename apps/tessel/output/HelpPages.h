#pragma once

#include <CLI/CLI.hpp>

#include <memory>
#include <string>

namespace Tessel::App {

/// How `--help` writes options: as the manual page does.
std::shared_ptr<CLI::FormatterBase> helpFormatter();

/// The manual page, for section 1, of the same definition.
std::string manualPage(const CLI::App& app, const std::string& version);

} // namespace Tessel::App
