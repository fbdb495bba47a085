#include "apps/tessel/commands/CommandLine.h"
#include "apps/tessel/commands/NumberBook.h"
#include "apps/tessel/commands/UserTimes.h"
#include "apps/tessel/output/ResultTable.h"

#include <algorithm>

namespace Tessel::App {

namespace {

using Kind = Invitation::Kind;

const char* nameOf(Kind kind)
{
    switch (kind) {
    case Kind::offer:
        return "offer";
    case Kind::withdrawal:
        return "withdrawal";
    case Kind::reply:
        return "reply";
    case Kind::unknown:
        break;
    }
    return "unknown";
}

/// Of an address, or of a path such as "/principals/bob/", what people call somebody by.
std::string personAt(std::string address)
{
    constexpr std::string_view scheme = "mailto:";
    if (address.starts_with(scheme)) return address.substr(scheme.size());
    if (address.find('/') == address.npos) return address;
    while (address.ends_with('/'))
        address.pop_back();
    return address.substr(address.rfind('/') + 1);
}

/// The name that the invitation has, or that is held; else its place.
std::string calendarOf(Workspace& workspace, const Invitation& each)
{
    if (!each.calendarName.empty()) return each.calendarName;
    const auto held = workspace.got(workspace.store()->calendars());
    const auto found = std::find_if(held.begin(), held.end(),
        [&](const auto& calendar) { return calendar.href == each.calendar; });
    return found == held.end() ? each.calendar : App::nameOf(*found);
}

NumberBook book(Workspace& workspace)
{
    return {workspace.account(), "invitations"};
}

/// The server keeps what was answered as it was: what this host has answered is noted here, for the
/// invitation of that time.
std::string noteOf(const Invitation& each, const std::string& answer)
{
    return answer + " " + (each.when ? std::to_string(each.when->millisecondsSince1970()) : "");
}

/// None where nothing was answered from here.
std::optional<std::string> answerTo(Workspace& workspace, const Invitation& each)
{
    const auto note = book(workspace).noteOn(each.place);
    for (const auto* answer : {"accepted", "declined"}) {
        if (each.kind == Kind::offer && note == noteOf(each, answer)) return answer;
    }
    return std::nullopt;
}

const char* nameOf(InviteState state)
{
    return state == InviteState::accepted ? "accepted"
        : state == InviteState::declined  ? "declined"
                                          : "answered";
}

std::string whatIsSaid(Workspace& workspace, const Invitation& each)
{
    const auto owner = each.ownerName.empty() ? personAt(each.owner) : each.ownerName;
    const auto calendar = calendarOf(workspace, each);
    switch (each.kind) {
    case Kind::offer:
        return owner + " shares " + calendar
            + (each.access == ShareAccess::readWrite ? " read-write" : " read-only");
    case Kind::withdrawal:
        return owner + " no longer shares " + calendar;
    case Kind::reply:
        return personAt(each.sharee) + " has " + nameOf(each.state) + " " + calendar;
    case Kind::unknown:
        break;
    }
    return each.failure ? reasonOf(*each.failure) : "something that tessel does not know";
}

std::vector<std::string> placesOf(const std::vector<Invitation>& invitations)
{
    std::vector<std::string> places;
    for (const auto& each : invitations)
        places.push_back(each.place);
    return places;
}

Json describe(const Invitation& each)
{
    Json object {{"kind", nameOf(each.kind)}, {"calendar", each.calendarName},
        {"owner", each.owner}, {"sharee", each.sharee},
        {"access", each.access == ShareAccess::readWrite ? "read-write" : "read-only"},
        {"when", each.when ? Json(isoTime(each.when->millisecondsSince1970())) : Json(nullptr)},
        {"place", each.place}};
    if (each.kind == Kind::reply) object["answer"] = nameOf(each.state);
    return object;
}

void list(Workspace& workspace)
{
    const auto invitations = workspace.got(workspace.session().invitations());
    const auto numbers = book(workspace).numbers(placesOf(invitations));
    ResultTable table(workspace.out(), {"", "WHEN", "WHAT"});
    for (std::size_t i = 0; i < invitations.size(); ++i) {
        const auto& each = invitations[i];
        auto object = describe(each);
        object["number"] = numbers[i];
        auto what = whatIsSaid(workspace, each);
        if (const auto answer = answerTo(workspace, each)) {
            what += " (" + *answer + ")";
            object["answer"] = *answer;
        }
        const auto when
            = each.when ? isoDay(userClock(each.when->millisecondsSince1970())) : std::string();
        table.add({std::to_string(numbers[i]), when, what}, object);
    }
    table.print("There are no invitations.");
}

Invitation chosen(Workspace& workspace, std::int64_t number)
{
    const auto invitations = workspace.got(workspace.session().invitations());
    return invitations[book(workspace).find(placesOf(invitations), number)];
}

void accept(Workspace& workspace, const NumberArguments& given)
{
    const auto invitation = chosen(workspace, given.number);
    const auto place = workspace.got(workspace.session().accept(invitation));
    book(workspace).note(invitation.place, noteOf(invitation, "accepted"));
    workspace.hold(place);
    auto object = describe(invitation);
    object.update({{"done", "accepted"}, {"href", place}});
    workspace.out().result(
        "accepted " + calendarOf(workspace, invitation) + ", at " + place, object);
}

void decline(Workspace& workspace, const NumberArguments& given)
{
    const auto invitation = chosen(workspace, given.number);
    workspace.got(workspace.session().decline(invitation));
    book(workspace).note(invitation.place, noteOf(invitation, "declined"));
    auto object = describe(invitation);
    object["done"] = "declined";
    workspace.out().result("declined " + calendarOf(workspace, invitation), object);
}

void dismiss(Workspace& workspace, const NumberArguments& given)
{
    const auto invitation = chosen(workspace, given.number);
    workspace.got(workspace.session().dismiss(invitation));
    auto object = describe(invitation);
    object["done"] = "dismissed";
    workspace.out().result("dismissed: " + whatIsSaid(workspace, invitation), object);
}

} // namespace

void addInvitationCommands(CommandLine& line)
{
    auto& group = addCommand(line.app, "invitations",
        "What others share with you, and what they have answered", "tessel invitations");
    setDefault(line, group, list);
    addCommand(line, group, "list", "Show them", "tessel invitations list", list);
    addCommand<NumberArguments>(line, group, "accept", "Have the calendar among your own",
        "tessel invitations accept 2", defineNumber, accept);
    addCommand<NumberArguments>(
        line, group, "decline", "Say no", "tessel invitations decline 2", defineNumber, decline);
    addCommand<NumberArguments>(line, group, "dismiss", "Take one off the list without an answer",
        "tessel invitations dismiss 2", defineNumber, dismiss);
}

} // namespace Tessel::App
