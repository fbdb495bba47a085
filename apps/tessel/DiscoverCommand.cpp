#include "apps/tessel/Commands.h"

namespace Tessel::App {

namespace {

std::vector<std::string> names(const MRVSupportedMethod& methods)
{
    std::vector<std::string> names;
    if (methods.contains(MRVSupportedMethod::makeCal)) names.emplace_back("MKCALENDAR");
    if (methods.contains(MRVSupportedMethod::deleteCal)) names.emplace_back("DELETE");
    if (methods.contains(MRVSupportedMethod::propertyPatch)) names.emplace_back("PROPPATCH");
    return names;
}

void discover(Host& host)
{
    const auto account = host.discover();
    std::string methods;
    for (const auto& name : names(account->supportedMethod))
        methods += " " + name;
    host.output().result("account " + account->email + " at " + account->serverURL + ", principal "
            + account->principalURL.value_or("-") + ", calendar home "
            + account->calendarHomeURL.value_or("-") + ", methods" + methods + host.lastWord(),
        {{"server", account->serverURL}, {"email", account->email},
            {"principal", Output::orNull(account->principalURL)},
            {"home", Output::orNull(account->calendarHomeURL)},
            {"inbox", Output::orNull(account->scheduleInboxURL)},
            {"outbox", Output::orNull(account->scheduleOutboxURL)},
            {"defaultCalendar", Output::orNull(account->scheduleDefaultURL)},
            {"notifications", Output::orNull(account->notificationURL)},
            {"addresses", account->calendarUserAddressSet.value_or(std::vector<std::string> {})},
            {"methods", names(account->supportedMethod)}, {"answer", host.lastAnswer()}});
}

} // namespace

void addDiscoverCommand(CLI::App& app, Command& chosen)
{
    app.add_subcommand("discover", "Find the account's locations on the server")
        ->callback([&chosen] { chosen = discover; });
}

} // namespace Tessel::App
