#include "apps/tessel/commands/CommandLine.h"

#include "apps/tessel/output/HelpPages.h"

namespace Tessel::App {

namespace {

constexpr const char* notes = R"(Exit status:
  0  done
  1  the server said no, or there is no such thing
  2  the command line cannot be meant
  3  no answer, or none in time
  4  a file of this machine cannot be read or written
  5  done in part: what was left out is named
  130  interrupted

The password comes from TESSEL_PASSWORD (a bearer token from TESSEL_TOKEN), from the desktop's
secret service, or is asked for on the terminal.)";

} // namespace

CommandLine::CommandLine()
    : app("Calendars on CalDAV servers: yours, and those that others share with you.", "tessel")
{
    app.formatter(helpFormatter());
    app.set_help_flag("-h,--help", "show what there is");
    app.set_version_flag("--version", "tessel " TESSEL_VERSION, "show the version");
    app.add_option("--account", options.account,
           "which account, where you have several: its number, name or user")
        ->type_name("NAME");
    app.add_option("--authority", options.authority, "trust the authorities of this PEM file")
        ->type_name("FILE");
    app.add_option("--timeout", options.timeoutSeconds,
           "how long a request may go without progress, 1 to 86400 (60 without it); ten times "
           "as long in all")
        ->type_name("SECONDS")
        ->check(CLI::Range(1, 86'400));
    app.add_flag("--insecure", options.isInsecure,
        "allow a server without TLS: everybody on the way can read the password and all calendars");
    app.add_flag("--offline", options.isOffline,
        "do without the server; changes wait until `tessel sync` or `tessel pending send`");
    app.add_flag("--json", options.isJson, "one JSON object a line");
    app.add_flag("--trace{exchanges}", options.trace,
           "tell of each exchange with the server; --trace=body shows what is said in it")
        ->check(CLI::IsMember({"exchanges", "body"}));
    app.require_subcommand(0, 1)->fallthrough();
    app.footer(notes);

    addAccountCommands(*this);
    addCalendarCommands(*this);
    addSyncCommand(*this);
    addAgendaCommands(*this);
    addEventCommands(*this);
    addFileCommands(*this);
    addSharingCommands(*this);
    addInvitationCommands(*this);
    addPendingCommands(*this);
    addDoctorCommand(*this);
}

CLI::App& addCommand(CLI::App& parent, const std::string& name, const std::string& description,
    const std::string& example)
{
    auto& command = *parent.add_subcommand(name, description);
    command.require_subcommand(0, 1)->fallthrough();
    command.footer("Example:\n  " + example);
    return command;
}

CLI::App& addCommand(CommandLine& line, CLI::App& parent, const std::string& name,
    const std::string& description, const std::string& example, void (*run)(Workspace&))
{
    auto& command = addCommand(parent, name, description, example);
    command.callback([&line, run] { line.command = run; });
    return command;
}

void defineCalendar(CLI::App& app, std::string& calendar)
{
    app.add_option("CALENDAR", calendar, "name or place")->required();
}

void defineNumber(CLI::App& app, NumberArguments& arguments)
{
    const auto group = app.get_parent()->get_name();
    app.add_option("NUMBER", arguments.number, "as `tessel " + group + "` prints it")->required();
}

void setDefault(CommandLine& line, CLI::App& group, void (*run)(Workspace&))
{
    group.callback([&line, &group, run] {
        if (group.get_subcommands().empty()) line.command = run;
    });
}

} // namespace Tessel::App
