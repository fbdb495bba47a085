#include "apps/tessel/accounts/CredentialSource.h"
#include "apps/tessel/accounts/SecretService.h"
#include "apps/tessel/commands/CommandLine.h"
#include "apps/tessel/output/Environment.h"
#include "apps/tessel/output/ResultTable.h"
#include "apps/tessel/output/Wording.h"

#include <Tessel/Platform/Foundation/Web/URL.h>

#include <filesystem>

namespace Tessel::App {

namespace {

struct AddArguments {
    std::string address;
    std::string server;
    std::string user;
    bool keepsPassword = false;
};

Json describe(const Account& account)
{
    return {{"account", account.name()}, {"user", account.user}, {"server", account.server},
        {"origin", account.origin}};
}

/// The names that the server may know the user by (RFC 6764, 6: the address, then what is before
/// its at-sign).
std::vector<std::string> userNames(const AddArguments& given)
{
    if (!given.user.empty()) return {given.user};
    const auto at = given.address.find('@');
    if (at == given.address.npos || at == 0)
        throw Stop::usage("Whose calendars? Give an address such as alice@example.com, or --user.");
    return {given.address, given.address.substr(0, at)};
}

void add(Workspace& workspace, const AddArguments& given)
{
    const auto& options = workspace.options();
    Account account {.server = given.server.empty() ? given.address : given.server,
        .user = {},
        .origin = {},
        .authority = options.authority.empty()
            ? std::string()
            : std::filesystem::absolute(options.authority).string(),
        .isInsecure = options.isInsecure,
        .address = given.address.find('@') == given.address.npos ? std::string() : given.address};
    if (account.server.empty())
        throw Stop::usage("Which server? Give an address such as alice@example.com, or --server.");
    if (account.server.find("://") != account.server.npos
        && withoutUserInfo(account.server) != account.server)
        throw Stop::usage(
            "A server's URL is kept and shown, so it must hold no user and no password: "
            "give --user, and the password when it is asked for.");

    const auto names = userNames(given);
    account.user = names.front();
    const auto found = findCredential(account);
    std::optional<Result<Session::Opened>> opened;
    for (const auto& name : names) {
        account.user = name;
        opened = workspace.open(account, found.credential);
        if (*opened || opened->failure().kind != FailureKind::unauthorized) break;
    }
    account.origin = workspace.got(*opened)->origin().text();
    const auto password = found.typed ? found.typed
        : given.keepsPassword         ? environmentValue("TESSEL_PASSWORD")
                                      : std::nullopt;
    account.hasKeptPassword = password && SecretService::keep(account, *password);
    const bool isNew = AccountList().put(account);
    auto object = describe(account);
    object["new"] = isNew;
    workspace.out().result((isNew ? "added " : "updated ") + account.name(), object);

    if (account.hasKeptPassword) {
        workspace.out().note("The password is kept by the desktop's secret service.");
        return;
    }
    const auto* const why = password ? "No secret service answers here: the password is not kept."
                                     : "There is no password to keep: set TESSEL_PASSWORD.";
    if (given.keepsPassword) return workspace.leaveOut("--keep-password", why);
    if (password) workspace.out().note(why);
}

void list(Workspace& workspace)
{
    ResultTable table(workspace.out(), {"", "ACCOUNT", "USER", "SERVER"});
    int number = 0;
    for (const auto& account : AccountList().all()) {
        auto object = describe(account);
        object["number"] = ++number;
        table.add({std::to_string(number), account.name(), account.user, account.server}, object);
    }
    table.print("There is no account yet. Add yours: tessel account add ADDRESS");
}

struct RemoveArguments {
    std::string name;
};

void remove(Workspace& workspace, const RemoveArguments& given)
{
    auto options = workspace.options();
    options.account = given.name;
    Workspace chosen(options);
    const auto account = chosen.account();
    const auto file = account.file(".sqlite");
    std::error_code error;
    if (std::filesystem::exists(file, error)) chosen.requireNothingWaits();
    AccountList().remove(account);
    if (!SecretService::forget(account) && account.hasKeptPassword)
        workspace.leaveOut("the password of " + account.name(),
            "The desktop's secret service does not answer, and may keep it still.");
    for (const auto* ending : {".sqlite", ".sqlite-wal", ".sqlite-shm", ".numbers.json"}) {
        const auto each = account.file(ending);
        if (std::filesystem::remove(each, error); error)
            workspace.leaveOut(each.string(), "It cannot be removed: " + error.message() + ".");
    }
    workspace.out().result("removed " + account.name(), describe(account));
}

void test(Workspace& workspace)
{
    const auto& place = workspace.session().place();
    const auto count = workspace.calendars().size();
    auto object = describe(workspace.account());
    object.update({{"homes", place.homes}, {"principal", place.principal}, {"calendars", count}});
    workspace.out().result(workspace.account().name() + " works: " + counted(count, "calendar")
            + " at " + joined(place.homes),
        object);
}

} // namespace

void addAccountCommands(CommandLine& line)
{
    auto& group = addCommand(line.app, "account", "The accounts that tessel knows",
        "tessel account add alice@example.com");
    setDefault(line, group, list);
    addCommand<AddArguments>(
        line, group, "add",
        "Find an account at its server and remember it; add it again to change it",
        "tessel account add --server cal.example.com/dav/ --user alice",
        [](CLI::App& app, AddArguments& arguments) {
            app.add_option("ADDRESS", arguments.address, "your e-mail address");
            app.add_option("--server", arguments.server, "host, host and port, or URL")
                ->type_name("SERVER");
            app.add_option("--user", arguments.user, "user name, if it is not the address")
                ->type_name("USER");
            app.add_flag("--keep-password", arguments.keepsPassword,
                "have the desktop keep the password of TESSEL_PASSWORD");
        },
        add);
    addCommand(line, group, "list", "Show the accounts", "tessel account list", list);
    addCommand<RemoveArguments>(
        line, group, "remove",
        "Forget an account with all that is held of it; nothing changes at the server",
        "tessel account remove alice@cal.example.com",
        [](CLI::App& app, RemoveArguments& arguments) {
            app.add_option("ACCOUNT", arguments.name, "number, name or user")->required();
        },
        remove);
    addCommand(line, group, "test", "Try whether the server lets the account in",
        "tessel account test", test);
}

} // namespace Tessel::App
