// Shares a calendar with a friend, who accepts it where that is an account whose password is the
// same. usage: sharing SERVER USER FRIEND'S-ADDRESS FRIEND'S-USER-NAME
#include "examples/session/Example.h"

using namespace Tessel;
using Example::got;

int main(int argc, char** argv)
{
    if (argc != 5) return 2;
    const auto session = Example::open(argc, argv);
    const auto calendar = got(wait(session->createCalendar({.displayName = "Choir"})));

    const auto shared
        = wait(session->share(calendar, {{.address = argv[3], .access = ShareAccess::readWrite}}));
    if (!shared) { // such as a server that offers no sharing
        std::cout << shared.reason() << '\n';
        got(wait(session->deleteCalendar(calendar)));
        return 0;
    }
    for (const auto& each : shared.value())
        std::cout << each.address << ": " << (each.outcome ? "invited" : each.outcome.reason())
                  << '\n';

    argv[2] = argv[4];
    const auto other = Example::open(argc, argv);
    for (const auto& invitation : got(wait(other->invitations()))) {
        const bool isOurs = invitation.calendarName == "Choir";
        if (!isOurs || invitation.kind != Invitation::Kind::offer) continue;
        const auto place = got(wait(other->accept(invitation)));
        std::cout << invitation.calendarName << " is at " << place << '\n';
        got(wait(other->dismiss(invitation)));
    }

    for (const auto& sharee : got(wait(session->sharees(calendar))))
        std::cout << sharee.address
                  << (sharee.state == InviteState::accepted ? " takes part\n" : "\n");
    got(wait(session->unshareAll(calendar)));
    got(wait(session->deleteCalendar(calendar)));
}
