#include "apps/tessel/commands/WaitingChanges.h"

#include "apps/tessel/commands/UserTimes.h"

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

std::string subjectOf(const std::string& text, const std::string& place)
{
    const auto event = EventText::read(text);
    return event ? event.value().main().summary().value_or(place) : place;
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
    return std::string(nameOf(change.kind)) + " " + subjectOf(text, change.href);
}

Json describe(const PendingChange& change)
{
    Json object {{"number", change.number}, {"id", change.id}, {"change", nameOf(change.kind)},
        {"href", change.href}, {"uid", change.uid}, {"calendar", change.calendar},
        {"state", stateOf(change)}, {"isParked", change.state == ChangeState::parked},
        {"attempts", change.attempts}};
    if (!change.destination.empty()) object["destination"] = change.destination;
    if (change.texts)
        object.update({{"mine", change.texts->mine}, {"theirs", change.texts->theirs}});
    return object;
}

void sendWaiting(Workspace& workspace)
{
    const auto out = workspace.out();
    const auto sent = workspace.got(
        workspace.session().sendOutbox(workspace.store(), [&](const auto& progress) {
            out.progress("change " + std::to_string(progress.done) + " of "
                + std::to_string(progress.total));
        }));
    out.progress("");
    for (const auto& each : sent.done) {
        const std::string what = nameOf(each.kind);
        out.result("sent: " + what + " " + subjectOf(each.resource.text, each.resource.href),
            {{"sent", what}, {"href", each.resource.href}});
    }
    for (const auto& left : workspace.got(Outbox(workspace.store()).pending()))
        workspace.leaveOut(nameOf(left), stateOf(left) + " See `tessel pending`.", describe(left));
    if (sent.stopped) throw Stop(*sent.stopped);
}

} // namespace Tessel::App
