#pragma once

#include "apps/tessel/commands/Workspace.h"

#include <CLI/CLI.hpp>

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

namespace Tessel::App {

using Command = std::function<void(Workspace&)>;

/// The whole command line: what is understood, help included, and what was chosen.
class CommandLine {
public:
    CommandLine();

    CLI::App app;
    Options options;
    Command command; ///< set by parsing
};

/// Adds a command below another; `example` is shown with its help.
CLI::App& addCommand(CLI::App& parent, const std::string& name, const std::string& description,
    const std::string& example);

/// Adds a command with arguments of its own: `define` adds options that fill them, `run` is called
/// with them when it was chosen.
template <class Arguments>
CLI::App& addCommand(CommandLine& line, CLI::App& parent, const std::string& name,
    const std::string& description, const std::string& example,
    const std::function<void(CLI::App&, Arguments&)>& define,
    void (*run)(Workspace&, const Arguments&))
{
    auto& command = addCommand(parent, name, description, example);
    const auto arguments = std::make_shared<Arguments>();
    define(command, *arguments);
    command.callback([&line, arguments, run] {
        line.command = [arguments, run](Workspace& workspace) { run(workspace, *arguments); };
    });
    return command;
}

CLI::App& addCommand(CommandLine& line, CLI::App& parent, const std::string& name,
    const std::string& description, const std::string& example, void (*run)(Workspace&));

/// The calendar that a command is about.
void defineCalendar(CLI::App& app, std::string& calendar);

/// One of the things that a group lists, by the number that is printed there.
struct NumberArguments {
    std::int64_t number = 0;
};
void defineNumber(CLI::App& app, NumberArguments& arguments);

/// Has a group of commands do something when none of them is given.
void setDefault(CommandLine& line, CLI::App& group, void (*run)(Workspace&));

void addAccountCommands(CommandLine& line);
void addCalendarCommands(CommandLine& line);
void addSyncCommand(CommandLine& line);
void addAgendaCommands(CommandLine& line);
void addEventCommands(CommandLine& line);
void addFileCommands(CommandLine& line);
void addSharingCommands(CommandLine& line);
void addInvitationCommands(CommandLine& line);
void addPendingCommands(CommandLine& line);
void addDoctorCommand(CommandLine& line);

} // namespace Tessel::App
