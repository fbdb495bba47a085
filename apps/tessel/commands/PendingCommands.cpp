#include "apps/tessel/commands/CommandLine.h"
#include "apps/tessel/commands/NumberBook.h"
#include "apps/tessel/commands/WaitingChanges.h"
#include "apps/tessel/output/ResultTable.h"

namespace Tessel::App {

namespace {

using Changes = std::vector<PendingChange>;

std::vector<std::string> idsOf(const Changes& changes)
{
    std::vector<std::string> ids;
    for (const auto& change : changes)
        ids.push_back(change.id);
    return ids;
}

Changes waiting(Workspace& workspace)
{
    return workspace.got(Outbox(workspace.store()).pending());
}

NumberBook book(Workspace& workspace)
{
    return {workspace.account(), "pending changes"};
}

void list(Workspace& workspace)
{
    const auto changes = waiting(workspace);
    const auto numbers = book(workspace).numbers(idsOf(changes));
    ResultTable table(workspace.out(), {"", "CHANGE", "STATE"});
    for (std::size_t i = 0; i < changes.size(); ++i) {
        auto object = describe(changes[i]);
        object["number"] = numbers[i];
        table.add({std::to_string(numbers[i]), nameOf(changes[i]), object["state"]}, object);
    }
    table.print("Nothing waits to be sent.");
}

struct NumberArguments {
    int number = 0;
};

PendingChange chosen(Workspace& workspace, int number)
{
    const auto changes = waiting(workspace);
    return changes[book(workspace).find(idsOf(changes), number)];
}

void drop(Workspace& workspace, const NumberArguments& given)
{
    const auto change = chosen(workspace, given.number);
    if (change.state == ChangeState::sending)
        throw Stop({.kind = FailureKind::conflict,
            .reason = nameOf(change) + " is on its way: wait, or `tessel pending send`."});
    workspace.got(Outbox(workspace.store()).resolve(change.id, Outbox::Keep::theirs));
    workspace.out().result("dropped: " + nameOf(change), {{"dropped", change.id}});
}

void keep(Workspace& workspace, const NumberArguments& given)
{
    const auto change = chosen(workspace, given.number);
    if (change.state == ChangeState::parked)
        workspace.got(Outbox(workspace.store()).resolve(change.id, Outbox::Keep::mine));
    if (!workspace.options().isOffline) sendWaiting(workspace);
}

void defineNumber(CLI::App& app, NumberArguments& arguments)
{
    app.add_option("NUMBER", arguments.number, "as `tessel pending` prints it")->required();
}

} // namespace

void addPendingCommands(CommandLine& line)
{
    auto& group = addCommand(
        line.app, "pending", "Changes that have not been sent yet", "tessel pending send");
    setDefault(line, group, list);
    addCommand(line, group, "list", "Show what waits, and why", "tessel pending list", list);
    addCommand(line, group, "send", "Send it", "tessel pending send", sendWaiting);
    addCommand<NumberArguments>(line, group, "drop",
        "Give a change up; what was changed after it is made without it", "tessel pending drop 2",
        defineNumber, drop);
    addCommand<NumberArguments>(line, group, "keep",
        "Make a change in conflict over what others have written, or try a refused one again",
        "tessel pending keep 2", defineNumber, keep);
}

} // namespace Tessel::App
