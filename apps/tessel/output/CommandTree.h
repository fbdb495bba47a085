#pragma once

#include <CLI/CLI.hpp>

#include <functional>
#include <string>
#include <vector>

namespace Tessel::App {

using CommandVisitor = std::function<void(const CLI::App&, const std::string& path)>;

/// Every command below one, itself first; `path` is "tessel event show".
void walk(const CLI::App& app, const std::string& path, const CommandVisitor& visitor);

std::vector<const CLI::Option*> optionsOf(const CLI::App& app, bool arePositional);

/// What stands for an option's value, such as "SECONDS"; empty for one that takes none.
std::string valueOf(const CLI::Option& option);

} // namespace Tessel::App
