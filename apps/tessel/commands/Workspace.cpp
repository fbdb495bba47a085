#include "apps/tessel/commands/Workspace.h"

#include "apps/tessel/accounts/CredentialSource.h"
#include "apps/tessel/commands/SyncReport.h"
#include "apps/tessel/output/TraceTransport.h"

#include <algorithm>

namespace Tessel::App {

namespace {

std::string joined(const std::vector<std::string>& words)
{
    std::string text;
    for (const auto& word : words)
        text += (text.empty() ? "" : ", ") + word;
    return text;
}

std::string lastPart(std::string place)
{
    while (place.ends_with('/'))
        place.pop_back();
    return place.substr(place.rfind('/') + 1);
}

Account chosen(const std::vector<Account>& accounts, const std::string& name)
{
    if (accounts.empty())
        throw Stop::usage("There is no account yet. Add yours: tessel account add ADDRESS");
    std::vector<Account> found;
    std::vector<std::string> names;
    for (const auto& each : accounts) {
        names.push_back(each.name());
        const bool isIt = name.empty() || name == each.name() || name == each.user
            || name == std::to_string(names.size());
        if (isIt) found.push_back(each);
    }
    if (found.size() == 1) return found.front();
    if (found.empty())
        throw Stop::usage("There is no account " + name + ". There are: " + joined(names) + ".");
    throw Stop::usage("Say with --account which one: " + joined(names) + ".");
}

void hide(const Credential& credential)
{
    if (const auto* password = std::get_if<Password>(&credential))
        TraceTransport::hide(password->text);
    if (const auto* token = std::get_if<Token>(&credential)) TraceTransport::hide(token->text);
}

} // namespace

std::string nameOf(const StoredCalendar& calendar)
{
    return calendar.displayName.empty() ? lastPart(calendar.href) : calendar.displayName;
}

Workspace::Workspace(Options options)
    : options_(std::move(options))
    , out_(options_.isJson)
{
}

const Account& Workspace::account()
{
    if (!account_) account_ = chosen(AccountList().all(), options_.account);
    return *account_;
}

std::shared_ptr<Store> Workspace::store()
{
    if (!store_) {
        const auto origin = Origin::of(account().origin);
        if (!origin) throw Stop::storage("The account's server is none: " + account().origin + ".");
        store_ = got(SQLiteStore::open(account().file(".sqlite"), {account().user, *origin}));
    }
    return store_;
}

Result<Session::Opened> Workspace::open(
    const Account& account, std::optional<std::string>& typed) const
{
    const bool isInsecure = options_.isInsecure || account.isInsecure;
    if (account.server.starts_with("http://") && !isInsecure)
        throw Stop::usage(account.server
            + " is a server without TLS: everybody on the way could read the password and all "
              "calendars. Give https://, or allow that with --insecure.");
    std::shared_ptr<MNetworkManager> transport
        = std::make_shared<MCurlNetworkManager>(MNetworkConfiguration {
            .authorityFile = options_.authority.empty() ? account.authority : options_.authority});
    if (!options_.trace.empty())
        transport = std::make_shared<TraceTransport>(transport, options_.trace == "body");
    MNetworkManager::setSharedInstance(transport);

    auto found = findCredential(account);
    hide(found.credential);
    typed = found.typed;
    const auto patience = std::chrono::seconds(options_.timeoutSeconds);
    return Interruption::await(
        Session::open({.server = account.server, .user = account.user}, found.credential, {},
            {.patience = patience, .limit = 10 * patience, .allowsPlainHTTP = isInsecure}));
}

Result<Session*> Workspace::reach()
{
    if (options_.isOffline) throw Stop::usage("This needs the server: leave --offline out.");
    if (!session_) {
        std::optional<std::string> typed;
        auto opened = open(account(), typed);
        if (!opened && opened.failure().kind == FailureKind::unreachable) return opened.failure();
        session_ = got(std::move(opened));
    }
    return session_.get();
}

Session& Workspace::session()
{
    return *got(reach());
}

std::vector<StoredCalendar> Workspace::calendars()
{
    if (options_.isOffline) return got(store()->calendars());
    return got(session().calendars());
}

std::vector<StoredCalendar> Workspace::heldCalendars()
{
    auto held = got(store()->calendars());
    if (!held.empty() || options_.isOffline) return held;
    sync({}, false);
    return got(store()->calendars());
}

std::optional<StoredCalendar> Workspace::find(
    const std::vector<StoredCalendar>& calendars, const std::string& name)
{
    const auto lastPartOf = [](const StoredCalendar& calendar) { return lastPart(calendar.href); };
    const auto placeOf = [](const StoredCalendar& calendar) { return calendar.href; };
    const std::function<std::string(const StoredCalendar&)> spellings[] {
        placeOf, nameOf, lastPartOf};
    for (const auto& spelling : spellings) {
        std::vector<StoredCalendar> found;
        std::vector<std::string> places;
        for (const auto& each : calendars) {
            if (spelling(each) != name) continue;
            found.push_back(each);
            places.push_back(each.href);
        }
        if (found.size() > 1)
            throw Stop::usage("There are several calendars " + name
                + "; give the place: " + joined(places) + ".");
        if (found.size() == 1) return found.front();
    }
    return std::nullopt;
}

StoredCalendar Workspace::choose(
    const std::vector<StoredCalendar>& calendars, const std::string& name)
{
    if (auto found = find(calendars, name)) return std::move(*found);
    std::vector<std::string> names;
    for (const auto& each : calendars)
        names.push_back(nameOf(each));
    throw Stop::missing("There is no calendar " + name
        + (names.empty() ? "." : ". There are: " + joined(names) + "."));
}

StoredCalendar Workspace::calendar(const std::string& name)
{
    return choose(calendars(), name);
}

StoredCalendar Workspace::heldCalendar(const std::string& name)
{
    const auto held = heldCalendars();
    if (auto found = find(held, name)) return std::move(*found);
    if (options_.isOffline) return choose(held, name);
    // One that is newer than the last sync.
    auto found = choose(calendars(), name);
    got(store()->put(found));
    return found;
}

void Workspace::sync(const std::string& calendar, bool tellsCounts)
{
    const auto report = [&](const SyncProgress& progress) {
        out_.progress("calendar " + std::to_string(progress.calendarNumber) + " of "
            + std::to_string(progress.calendarCount) + ": " + std::to_string(progress.done) + " of "
            + std::to_string(progress.total) + " events");
    };
    auto& at = session();
    const auto changes = got(
        calendar.empty() ? at.sync(store(), report) : at.syncCalendar(store(), calendar, report));
    out_.progress("");
    if (tellsCounts) tell(out_, *store(), changes);
    for (const auto& each : changes.calendars) {
        for (const auto& failed : each.failed)
            leaveOut(failed.href, failed.reason, {{"calendar", each.displayName}});
        if (each.failure) leaveOut(each.displayName, reasonOf(*each.failure));
    }
}

void Workspace::leaveOut(const std::string& what, const std::string& reason, const Json& more)
{
    isPartly_ = true;
    Json object {{"failed", what}, {"reason", reason}};
    if (more.is_object()) object.update(more);
    if (out_.isJson()) return out_.object(object);
    out_.note(what + ": " + reason);
}

} // namespace Tessel::App
