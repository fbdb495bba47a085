#include "apps/tessel/commands/WaitingChanges.h"

#include "apps/tessel/commands/EventTitle.h"
#include "apps/tessel/commands/EventVersions.h"
#include "apps/tessel/commands/UserTimes.h"

#include <map>

namespace Tessel::App {

namespace {

constexpr std::pair<ChangeKind, const char*> kinds[] {{ChangeKind::create, "create"},
    {ChangeKind::edit, "change"}, {ChangeKind::move, "move"}, {ChangeKind::remove, "delete"}};

const char* nameOf(ChangeKind kind)
{
    for (const auto& [each, name] : kinds) {
        if (each == kind) return name;
    }
    return "";
}

/// Why it has not been sent yet.
std::string stateOf(const PendingChange& change)
{
    switch (change.state) {
    case ChangeState::sending:
        return "on its way";
    case ChangeState::parked:
        return change.texts ? "in conflict: " + change.reason : "refused: " + change.reason;
    case ChangeState::waiting:
        break;
    }
    if (change.attempts == 0) return "waits to be sent";
    return "waits until " + isoTime(change.notBefore) + ": " + change.reason;
}

} // namespace

std::string nameOf(const PendingChange& change)
{
    const auto& text = change.kind == ChangeKind::create ? change.content : change.baseText;
    return std::string(nameOf(change.kind)) + " " + titleOf(text, change.href);
}

Json describe(const PendingChange& change)
{
    Json object {{"number", change.number}, {"id", change.id}, {"change", nameOf(change.kind)},
        {"href", change.href}, {"uid", change.uid}, {"calendar", change.calendar},
        {"state", stateOf(change)}, {"isParked", change.state == ChangeState::parked},
        {"attempts", change.attempts}};
    if (change.kind == ChangeKind::move) object["destination"] = change.destination;
    if (change.texts)
        object.update({{"mine", change.texts->mine}, {"theirs", change.texts->theirs}});
    return object;
}

std::string detailOf(const PendingChange& change)
{
    switch (change.kind) {
    case ChangeKind::move:
        return "to " + change.destination;
    case ChangeKind::remove:
        return {};
    case ChangeKind::create: {
        const auto event = EventText::read(change.content);
        const auto start = event ? event.value().main().start() : std::nullopt;
        return start ? "start: " + shownMoment(*start) : "";
    }
    case ChangeKind::edit:
        break;
    }
    const auto edit = EventEdit::read(change.content);
    if (!edit) return changeIn(change.content, change.baseText); // it is the whole text
    const auto event = EventText::read(change.baseText);
    if (!event) return {};
    const auto edited = event.value().apply(edit.value());
    return edited ? changeIn(edited.value().event.text(), change.baseText) : "";
}

std::string adviceFor(const PendingChange& change)
{
    const auto number = std::to_string(change.number);
    const auto* const kept = change.texts ? " makes yours all the same, " : " tries again, ";
    const auto* const dropped = change.texts ? " leaves theirs." : " gives it up.";
    return "`tessel pending keep " + number + "`" + kept + "`tessel pending drop " + number + "`"
        + dropped;
}

void sendWaiting(Workspace& workspace)
{
    sendWaitingFor(workspace, {});
}

void sendWaitingFor(Workspace& workspace, const std::string& id)
{
    const auto& out = workspace.out();
    std::map<std::string, std::string> names;
    for (const auto& change : workspace.got(Outbox(workspace.store()).pending()))
        names.emplace(change.id, nameOf(change));
    const auto sent = workspace.got(
        workspace.session().sendOutbox(workspace.store(), [&](const auto& progress) {
            out.progress("change " + std::to_string(progress.done) + " of "
                + std::to_string(progress.total));
        }));
    out.progress("");
    for (const auto& each : sent.done) {
        const std::string what = nameOf(each.kind);
        const auto& [resource, text] = std::pair(each.resource.href, each.resource.text);
        out.result(
            "sent: " + (text.empty() ? names[each.id] : what + " " + titleOf(text, resource)),
            {{"sent", what}, {"href", resource}});
    }
    std::size_t others = 0;
    for (const auto& left : workspace.got(Outbox(workspace.store()).pending())) {
        if (!id.empty() && left.id != id) {
            ++others;
            continue;
        }
        const bool isParked = left.state == ChangeState::parked;
        auto state = stateOf(left);
        if (!state.ends_with('.')) state += '.';
        workspace.leaveOut(std::to_string(left.number) + ", " + nameOf(left),
            state + " " + (isParked ? adviceFor(left) : "See `tessel pending`."), describe(left));
        if (left.texts) noteVersions(out, *left.texts, left.baseText);
    }
    if (others > 0 && !out.isJson())
        out.note(std::to_string(others) + " more " + (others == 1 ? "waits" : "wait")
            + ". See `tessel pending`.");
    if (sent.stopped) throw Stop(*sent.stopped);
}

} // namespace Tessel::App
