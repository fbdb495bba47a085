#pragma once

#include "apps/tessel/Host.h"

#include <CLI/CLI.hpp>

#include <functional>

namespace Tessel::App {

/// What the command line asks for; set while it is read, carried out afterwards.
using Command = std::function<void(Host&)>;

// Each adds its commands to `app`; the one that the user chose is put into `chosen`.
void addDiscoverCommand(CLI::App& app, Command& chosen);
void addCalendarCommands(CLI::App& app, Command& chosen);
void addSyncCommand(CLI::App& app, Command& chosen);
void addEventCommands(CLI::App& app, Command& chosen);
void addSharingCommands(CLI::App& app, Command& chosen);

} // namespace Tessel::App
