#include "apps/tessel/Commands.h"
#include "apps/tessel/SyncRun.h"

namespace Tessel::App {

namespace {

std::string counts(const char* what, std::size_t added, std::size_t edited, std::size_t removed)
{
    return std::string(what) + " " + std::to_string(added) + " added, " + std::to_string(edited)
        + " edited, " + std::to_string(removed) + " removed";
}

void sync(Host& host)
{
    const auto totals = std::make_shared<SyncRun>(host)->run();
    host.output().result("synced: "
            + counts(
                "calendars", totals.calendarsAdded, totals.calendarsEdited, totals.calendarsRemoved)
            + "; " + counts("events", totals.eventsAdded, totals.eventsEdited, totals.eventsRemoved)
            + host.lastWord(),
        {{"calendarsAdded", std::int64_t(totals.calendarsAdded)},
            {"calendarsEdited", std::int64_t(totals.calendarsEdited)},
            {"calendarsRemoved", std::int64_t(totals.calendarsRemoved)},
            {"eventsAdded", std::int64_t(totals.eventsAdded)},
            {"eventsEdited", std::int64_t(totals.eventsEdited)},
            {"eventsRemoved", std::int64_t(totals.eventsRemoved)}, {"failed", totals.failed},
            {"answer", host.lastAnswer()}});
    if (totals.failed.empty()) return;

    std::string names;
    for (const auto& name : totals.failed)
        names += (names.empty() ? "" : ", ") + name;
    host.fail("sync", "the events of these calendars are not complete: " + names);
}

} // namespace

void addSyncCommand(CLI::App& app, Command& chosen)
{
    app.add_subcommand("sync", "Bring the store up to date with the server and print each change")
        ->callback([&chosen] { chosen = sync; });
}

} // namespace Tessel::App
