#include "apps/tessel/commands/CommandLine.h"
#include "apps/tessel/commands/EventVersions.h"
#include "apps/tessel/commands/WaitingChanges.h"
#include "apps/tessel/output/ResultTable.h"

#include <algorithm>

namespace Tessel::App {

namespace {

using Changes = std::vector<PendingChange>;

Changes waiting(Workspace& workspace)
{
    return workspace.got(Outbox(workspace.store()).pending());
}

Json describeWithText(const PendingChange& change)
{
    auto object = describe(change);
    object["what"] = detailOf(change);
    const auto text = textOf(change);
    object["text"] = text.empty() ? Json(nullptr) : Json(text);
    return object;
}

void list(Workspace& workspace)
{
    const auto& out = workspace.out();
    const auto changes = waiting(workspace);
    ResultTable table(out, {"", "CHANGE", "WHAT", "STATE"});
    for (const auto& change : changes) {
        const auto object = describeWithText(change);
        table.add({std::to_string(change.number), nameOf(change), object["what"], object["state"]},
            object);
    }
    table.print("Nothing waits to be sent.");
    for (const auto& change : changes) {
        if (change.state != ChangeState::parked) continue;
        out.line("");
        out.line(std::to_string(change.number) + ", " + nameOf(change) + ": " + adviceFor(change));
        if (change.texts) listVersions(out, *change.texts, change.baseText);
    }
}

PendingChange chosen(Workspace& workspace, std::int64_t number)
{
    const auto changes = waiting(workspace);
    const auto found = std::find_if(changes.begin(), changes.end(),
        [&](const auto& change) { return change.number == number; });
    if (found != changes.end()) return *found;
    throw Stop::missing("No change " + std::to_string(number)
        + " waits: it may have been sent since it was listed. `tessel pending` lists what waits.");
}

void show(Workspace& workspace, const NumberArguments& given)
{
    const auto& out = workspace.out();
    const auto change = chosen(workspace, given.number);
    if (out.isJson()) return out.object(describeWithText(change));
    // What is not its text goes elsewhere, so that the text can be kept.
    out.note(std::to_string(change.number) + ", " + nameOf(change) + ": " + stateAndAdvice(change));
    const auto tell = [&](const char* whose, const std::string& text) {
        out.note(whose + std::string(text.empty() ? ": nothing is written." : ":"));
        out.text(text);
    };
    if (!change.texts) return tell("It writes", textOf(change));
    tell("yours", change.texts->mine);
    tell("theirs", change.texts->theirs);
}

void drop(Workspace& workspace, const NumberArguments& given)
{
    const auto change = chosen(workspace, given.number);
    if (change.state == ChangeState::sending)
        throw Stop({.kind = FailureKind::conflict,
            .reason = nameOf(change) + " cannot be given up, since the server may have made it: "
                + stateAndAdvice(change)});
    workspace.got(Outbox(workspace.store()).resolve(change.id, Outbox::Keep::theirs));
    workspace.out().result("dropped: " + nameOf(change), {{"dropped", change.id}});
}

void keep(Workspace& workspace, const NumberArguments& given)
{
    const auto change = chosen(workspace, given.number);
    if (change.state == ChangeState::parked)
        workspace.got(Outbox(workspace.store()).resolve(change.id, Outbox::Keep::mine));
    if (!workspace.options().isOffline) return sendWaitingFor(workspace, change.id);
    workspace.out().result(
        "kept: " + nameOf(change) + ", waits to be sent (tessel pending)", {{"kept", change.id}});
}

} // namespace

void addPendingCommands(CommandLine& line)
{
    auto& group = addCommand(
        line.app, "pending", "Changes that have not been sent yet", "tessel pending send");
    setDefault(line, group, list);
    addCommand(line, group, "list", "Show what waits, and why", "tessel pending list", list);
    addCommand<NumberArguments>(line, group, "show",
        "Show the iCalendar text that a change will write; of one in conflict, both versions",
        "tessel pending show 2 > kept.ics", defineNumber, show);
    addCommand(line, group, "send", "Send what waits", "tessel pending send", sendWaiting);
    addCommand<NumberArguments>(line, group, "drop",
        "Give a change up; what was changed after it is made without it", "tessel pending drop 2",
        defineNumber, drop);
    addCommand<NumberArguments>(line, group, "keep",
        "Make a change in conflict over what others have written, or try a refused one again",
        "tessel pending keep 2", defineNumber, keep);
}

} // namespace Tessel::App
