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

bool isAhead(std::int64_t time)
{
    return time > Date().millisecondsSince1970();
}

/// Why it has not been sent yet.
std::string stateOf(const PendingChange& change)
{
    const auto until
        = isAhead(change.notBefore) ? " until " + shownDeadline(change.notBefore) : std::string();
    const auto why = change.reason.empty() ? std::string() : ": " + change.reason;
    switch (change.state) {
    case ChangeState::sending:
        return (until.empty() ? "may have arrived" : "on its way" + until) + why;
    case ChangeState::parked:
        return (change.texts ? "in conflict" : "refused") + why;
    case ChangeState::waiting:
        break;
    }
    if (change.attempts == 0) return "waits to be sent";
    return "waits" + (until.empty() ? " to be sent again" : until) + why;
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

std::string textOf(const PendingChange& change)
{
    switch (change.kind) {
    case ChangeKind::remove:
        return {};
    case ChangeKind::move:
        return change.baseText;
    case ChangeKind::create:
        return change.content;
    case ChangeKind::edit:
        break;
    }
    const auto edit = EventEdit::read(change.content);
    if (!edit) return change.content; // it is the whole text
    const auto event = EventText::read(change.baseText);
    if (!event) return {};
    const auto edited = event.value().apply(edit.value());
    return edited ? edited.value().event.text() : std::string();
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
    const auto text = textOf(change);
    return text.empty() ? text : changeIn(text, change.baseText);
}

std::string adviceFor(const PendingChange& change)
{
    if (change.state == ChangeState::waiting) return "See `tessel pending`.";
    if (change.state == ChangeState::sending) {
        return std::string(isAhead(change.notBefore) ? "After that `" : "`")
            + "tessel pending send` looks whether it has arrived, and makes it where it has not.";
    }
    const auto number = std::to_string(change.number);
    const auto* const kept = change.texts ? " makes yours all the same, " : " tries again, ";
    const auto* const dropped = change.texts ? " leaves theirs." : " gives it up.";
    return "`tessel pending keep " + number + "`" + kept + "`tessel pending drop " + number + "`"
        + dropped;
}

std::string stateAndAdvice(const PendingChange& change)
{
    const auto state = stateOf(change);
    return state + (state.ends_with('.') ? " " : ". ") + adviceFor(change);
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
        workspace.leaveOut(std::to_string(left.number) + ", " + nameOf(left), stateAndAdvice(left),
            describe(left));
        if (left.texts) noteVersions(out, *left.texts, left.baseText);
    }
    if (others > 0 && !out.isJson())
        out.note(std::to_string(others) + " more " + (others == 1 ? "waits" : "wait")
            + ". See `tessel pending`.");
    if (sent.stopped) throw Stop(*sent.stopped);
}

} // namespace Tessel::App
