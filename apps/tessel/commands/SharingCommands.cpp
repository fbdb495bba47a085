#include "apps/tessel/commands/CommandLine.h"
#include "apps/tessel/output/ResultTable.h"

namespace Tessel::App {

namespace {

struct ShareArguments {
    std::string calendar;
    std::vector<std::string> addresses;
    bool mayWrite = false;
    bool isAll = false;
};

std::string accessOf(ShareAccess access)
{
    return access == ShareAccess::readWrite ? "read-write" : "read-only";
}

std::string stateOf(InviteState state)
{
    switch (state) {
    case InviteState::open:
        return "not answered";
    case InviteState::accepted:
        return "accepted";
    case InviteState::declined:
        return "declined";
    case InviteState::invalid:
        break;
    }
    return "unknown to the server";
}

/// Tells what became of each address. Where nothing was done at all, that is how the command ends.
void tell(Workspace& workspace, const std::string& verb, const StoredCalendar& calendar,
    const ShareeOutcomes& outcomes)
{
    std::size_t done = 0;
    for (const auto& each : outcomes)
        done += each.outcome ? 1 : 0;
    for (const auto& [address, outcome, sharee] : outcomes) {
        if (!outcome && done == 0 && outcomes.size() == 1) throw Stop(outcome.failure());
        if (!outcome) {
            workspace.leaveOut(address, reasonOf(outcome.failure()));
            continue;
        }
        auto line = verb + " " + nameOf(calendar) + " with " + address;
        Json object {{"done", verb}, {"calendar", nameOf(calendar)}, {"address", address}};
        if (sharee) {
            line += ", " + accessOf(sharee->access) + ", " + stateOf(sharee->state);
            object.update(
                {{"access", accessOf(sharee->access)}, {"state", stateOf(sharee->state)}});
        }
        workspace.out().result(line, object);
    }
    if (done == 0 && !outcomes.empty())
        throw Stop({.kind = FailureKind::refused, .reason = "Nothing of this was done."});
}

void share(Workspace& workspace, const ShareArguments& given)
{
    const auto calendar = workspace.calendar(given.calendar);
    std::vector<Invitee> invitees;
    for (const auto& address : given.addresses)
        invitees.push_back({address, given.mayWrite ? ShareAccess::readWrite : ShareAccess::read});
    tell(workspace, "shared", calendar,
        workspace.got(workspace.session().share(calendar.href, invitees)));
}

void unshare(Workspace& workspace, const ShareArguments& given)
{
    if (given.isAll != given.addresses.empty())
        throw Stop::usage("Say with whom no longer: addresses, or --all.");
    const auto calendar = workspace.calendar(given.calendar);
    auto& session = workspace.session();
    const auto outcomes
        = workspace.got(given.isAll ? session.unshareAll(calendar.href)
                                    : session.unshare(calendar.href, given.addresses));
    tell(workspace, "no longer shared", calendar, outcomes);
    if (outcomes.empty())
        workspace.out().result(nameOf(calendar) + " is shared with nobody",
            {{"done", "no longer shared"}, {"calendar", nameOf(calendar)}});
}

void sharees(Workspace& workspace, const ShareArguments& given)
{
    const auto calendar = workspace.calendar(given.calendar);
    ResultTable table(workspace.out(), {"ADDRESS", "NAME", "ACCESS", "STATE"});
    for (const auto& each : workspace.got(workspace.session().sharees(calendar.href))) {
        table.add({each.address, each.name, accessOf(each.access), stateOf(each.state)},
            {{"calendar", nameOf(calendar)}, {"address", each.address}, {"name", each.name},
                {"access", accessOf(each.access)}, {"state", stateOf(each.state)}});
    }
    table.print(nameOf(calendar) + " is shared with nobody.");
}

} // namespace

void addSharingCommands(CommandLine& line)
{
    addCommand<ShareArguments>(
        line, line.app, "share", "Let others see a calendar, or change what they may do with it",
        "tessel share Work bob@example.com --write",
        [](CLI::App& app, ShareArguments& arguments) {
            defineCalendar(app, arguments.calendar);
            app.add_option("ADDRESS", arguments.addresses, "whom to invite")->required();
            app.add_flag("--write", arguments.mayWrite, "they may change it, too");
        },
        share);
    addCommand<ShareArguments>(
        line, line.app, "unshare", "Take a calendar back from some or all",
        "tessel unshare Work bob@example.com",
        [](CLI::App& app, ShareArguments& arguments) {
            defineCalendar(app, arguments.calendar);
            app.add_option("ADDRESS", arguments.addresses, "from whom");
            app.add_flag("--all", arguments.isAll, "from everybody");
        },
        unshare);
    addCommand<ShareArguments>(
        line, line.app, "sharees", "Show whom a calendar is shared with", "tessel sharees Work",
        [](CLI::App& app, ShareArguments& arguments) { defineCalendar(app, arguments.calendar); },
        sharees);
}

} // namespace Tessel::App
