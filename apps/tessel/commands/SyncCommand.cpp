#include "apps/tessel/commands/CommandLine.h"
#include "apps/tessel/commands/WaitingChanges.h"

namespace Tessel::App {

namespace {

struct SyncArguments {
    std::string calendar;
};

void sync(Workspace& workspace, const SyncArguments& given)
{
    if (!workspace.got(Outbox(workspace.store()).pending()).empty()) sendWaiting(workspace);
    if (given.calendar.empty()) return workspace.sync();
    workspace.sync(workspace.calendar(given.calendar).href);
}

} // namespace

void addSyncCommand(CommandLine& line)
{
    addCommand<SyncArguments>(
        line, line.app, "sync", "Send what waits, then bring what has changed at the server",
        "tessel sync",
        [](CLI::App& app, SyncArguments& arguments) {
            app.add_option("CALENDAR", arguments.calendar, "this calendar only");
        },
        sync);
}

} // namespace Tessel::App
