#include "apps/tessel/commands/CalendarFile.h"
#include "apps/tessel/commands/CommandLine.h"
#include "apps/tessel/commands/EventWrites.h"

#include <fstream>
#include <iostream>
#include <iterator>

namespace Tessel::App {

namespace {

struct ImportArguments {
    std::string calendar;
    std::vector<std::string> files;
};

std::optional<std::string> read(const std::string& file)
{
    if (file == "-") return std::string(std::istreambuf_iterator<char>(std::cin), {});
    std::ifstream stream(file, std::ios::binary);
    if (!stream) return std::nullopt;
    std::string text(std::istreambuf_iterator<char>(stream), {});
    return stream.bad() ? std::nullopt : std::optional(std::move(text));
}

/// Whether the next event may be tried after a failure.
bool mayGoOn(const Failure& failure)
{
    switch (failure.kind) {
    case FailureKind::unreachable:
    case FailureKind::untrusted:
    case FailureKind::unauthorized:
    case FailureKind::cancelled:
    case FailureKind::storage:
        return false;
    default:
        return true;
    }
}

void import(Workspace& workspace, const ImportArguments& given)
{
    const auto calendar = workspace.heldCalendar(given.calendar);
    EventWrites writes(workspace);
    std::size_t count = 0;
    for (const auto& file : given.files) {
        const auto text = read(file);
        if (!text) {
            workspace.leaveOut(file, "It cannot be read.");
            continue;
        }
        const auto events = eventsOf(*text);
        if (!events) {
            workspace.leaveOut(file, reasonOf(events.failure()));
            continue;
        }
        std::size_t number = 0;
        for (const auto& [uid, event] : events.value()) {
            workspace.out().progress(file + ": event " + std::to_string(++number) + " of "
                + std::to_string(events.value().size()));
            const auto written = event ? writes.create(calendar, event.value()) : event.failure();
            if (!written) {
                if (!mayGoOn(written.failure())) throw Stop(written.failure());
                workspace.leaveOut(file + ": " + uid, reasonOf(written.failure()));
                continue;
            }
            ++count;
            workspace.out().object({{"imported", uid}, {"href", written.value().resource.href},
                {"isWaiting", written.value().waits}});
        }
    }
    workspace.out().progress("");
    workspace.out().line("imported " + std::to_string(count) + " events into " + nameOf(calendar));
}

struct ExportArguments {
    std::string calendar;
    std::string file;
};

void exportCalendar(Workspace& workspace, const ExportArguments& given)
{
    const auto calendar = workspace.heldCalendar(given.calendar);
    const auto store = workspace.store();
    std::ofstream file;
    if (!given.file.empty()) {
        file.open(given.file, std::ios::binary | std::ios::trunc);
        if (!file) throw Stop::storage(given.file + " cannot be written.");
    }
    const auto& out = workspace.out();
    JoinedCalendar joined(nameOf(calendar), [&](std::string_view text) {
        file.is_open() ? static_cast<void>(file << text) : out.text(text);
    });
    std::size_t count = 0;
    workspace.got(store->visit(calendar.href, [&](const Resource& resource) {
        if (const auto added = joined.add(resource.text)) {
            ++count;
        } else {
            workspace.leaveOut(resource.href, reasonOf(added.failure()));
        }
        return true;
    }));
    joined.end();
    for (const auto& failed : workspace.got(store->failed(calendar.href)))
        workspace.leaveOut(failed.href, failed.reason);
    if (!file.is_open()) return;
    file.close();
    if (!file) throw Stop::storage(given.file + " could not be written to its end.");
    out.result(
        "exported " + std::to_string(count) + " of " + nameOf(calendar) + " to " + given.file,
        {{"exported", count}, {"calendar", nameOf(calendar)}, {"file", given.file}});
}

} // namespace

void addFileCommands(CommandLine& line)
{
    addCommand<ImportArguments>(
        line, line.app, "import",
        "Write the events of iCalendar files into a calendar, never over existing ones",
        "tessel import Work conference.ics holidays.ics",
        [](CLI::App& app, ImportArguments& arguments) {
            app.add_option("CALENDAR", arguments.calendar, "name or place")->required();
            app.add_option("FILE", arguments.files, "iCalendar files; - for standard input")
                ->required();
        },
        import);
    addCommand<ExportArguments>(
        line, line.app, "export", "Write a calendar as it is held as one iCalendar text",
        "tessel export Work > work.ics",
        [](CLI::App& app, ExportArguments& arguments) {
            app.add_option("CALENDAR", arguments.calendar, "name or place")->required();
            app.add_option("--output", arguments.file, "to this file")->type_name("FILE");
        },
        exportCalendar);
}

} // namespace Tessel::App
