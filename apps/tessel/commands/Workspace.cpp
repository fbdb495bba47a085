#include "apps/tessel/commands/Workspace.h"

#include "apps/tessel/accounts/CredentialSource.h"
#include "apps/tessel/commands/CaseFolding.h"
#include "apps/tessel/commands/SyncReport.h"
#include "apps/tessel/output/DiscreetTransport.h"
#include "apps/tessel/output/Secrets.h"
#include "apps/tessel/output/TraceTransport.h"
#include "apps/tessel/output/Wording.h"

#include <algorithm>

namespace Tessel::App {

namespace {

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

/// Nobody has looked for an account that is known already.
Failure unreached(Failure failure)
{
    constexpr std::string_view theirs = "The account could not be found";
    if (isUnreached(failure) && failure.reason.starts_with(theirs))
        failure.reason.replace(0, theirs.size(), "The server could not be reached");
    return failure;
}

void hide(const Credential& credential)
{
    if (const auto* password = std::get_if<Password>(&credential)) Secrets::add(password->text);
    if (const auto* token = std::get_if<Token>(&credential)) Secrets::add(token->text);
}

} // namespace

bool isUnreached(const Failure& failure)
{
    return !failure.isUncertain
        && (failure.kind == FailureKind::unreachable || failure.kind == FailureKind::timedOut);
}

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
    if (!account_) {
        account_ = chosen(AccountList().all(), options_.account);
        account_->isInsecure |= options_.isInsecure;
        if (!options_.authority.empty()) account_->authority = options_.authority;
    }
    return *account_;
}

std::shared_ptr<AccountStore> Workspace::store()
{
    if (!store_) {
        const auto origin = Origin::of(account().origin);
        if (!origin) throw Stop::storage("The account's server is none: " + account().origin + ".");
        store_ = std::make_shared<AccountStore>(
            got(SQLiteStore::open(account().file(".sqlite"), {account().user, *origin})));
    }
    return store_;
}

Result<Session::Opened> Workspace::open(const Account& account, const Credential& credential) const
{
    std::shared_ptr<MNetworkManager> transport = std::make_shared<MCurlNetworkManager>(
        MNetworkConfiguration {.authorityFile = account.authority});
    if (!options_.trace.empty())
        transport = std::make_shared<TraceTransport>(transport, options_.trace == "body");
    MNetworkManager::setSharedInstance(std::make_shared<DiscreetTransport>(transport));

    hide(credential);
    const auto patience = std::chrono::seconds(options_.timeoutSeconds);
    return Interruption::await(
        Session::open({.server = account.server, .user = account.user}, credential, {},
            {.patience = patience, .limit = 10 * patience, .allowsPlainHTTP = account.isInsecure}));
}

Result<Session*> Workspace::sessionIfReached()
{
    if (options_.isOffline) throw Stop::usage("This needs the server: leave --offline out.");
    if (!session_) session_ = open(account(), findCredential(account()).credential);
    if (*session_) return session_->value().get();
    const auto failure = unreached(session_->failure());
    if (!isUnreached(failure)) throw Stop(failure);
    return failure;
}

Session& Workspace::session()
{
    return *got(sessionIfReached());
}

std::vector<StoredCalendar> Workspace::calendars()
{
    if (options_.isOffline) return got(store()->calendars());
    return got(session().calendars());
}

std::vector<StoredCalendar> Workspace::heldCalendars()
{
    auto held = got(store()->calendars());
    if (options_.isOffline || std::any_of(held.begin(), held.end(), [&](const auto& each) {
            return wasBrought(each);
        }))
        return held;
    if (!held.empty()) {
        if (const auto session = sessionIfReached(); !session) {
            leaveOut("The calendars", reasonOf(session.failure()));
            return held;
        }
    }
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
    std::vector<StoredCalendar> alike;
    for (const auto& each : calendars) {
        if (foldedCase(nameOf(each)) == foldedCase(name)) alike.push_back(each);
    }
    return alike.size() == 1 ? std::optional(alike.front()) : std::nullopt;
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
    if (options_.isOffline) return choose(held, name);
    auto found = find(held, name);
    if (!found) {
        found = choose(calendars(), name);
        sync(found->href, false);
    } else if (!wasBrought(*found)) {
        if (const auto session = sessionIfReached())
            sync(found->href, false);
        else
            leaveOut(nameOf(*found), reasonOf(session.failure()));
    }
    return std::move(*found);
}

/// A sync that failed or was interrupted leaves calendars of which nothing has come.
bool Workspace::wasBrought(const StoredCalendar& calendar)
{
    return calendar.mark != SyncMark {} || !got(store()->tags(calendar.href)).empty();
}

void Workspace::requireNothingWaits(const std::string& calendar)
{
    const auto withSlash
        = [](const std::string& place) { return place.ends_with('/') ? place : place + "/"; };
    const auto liesThere = [&](const std::string& place) {
        return calendar.empty() || withSlash(place).starts_with(withSlash(calendar));
    };
    const auto pending = got(Outbox(store()).pending());
    const auto count = std::count_if(pending.begin(), pending.end(), [&](const auto& change) {
        return liesThere(change.calendar) || liesThere(change.destination);
    });
    if (count > 0)
        throw Stop::usage(counted(std::size_t(count), "change") + (count == 1 ? " waits" : " wait")
            + " to be sent. See `tessel pending`: send or drop what waits first.");
}

/// With the properties that the server has given it.
void Workspace::hold(const std::string& place)
{
    const auto listed = Interruption::await(session().calendars());
    const auto why = [&] {
        if (!listed) return reasonOf(listed.failure());
        for (const auto& each : listed.value()) {
            if (each.href != place) continue;
            const auto kept = store()->put(each);
            return kept ? std::string() : reasonOf(kept.failure());
        }
        return std::string("The server does not list it yet.");
    }();
    if (!why.empty())
        leaveOut(place, "The server has done it. Here it is known after `tessel sync`: " + why);
}

void Workspace::sync(const std::string& calendar, bool tellsCounts)
{
    const auto report = [out = out_](const SyncProgress& progress) {
        out.progress("calendar " + std::to_string(progress.calendarNumber) + " of "
            + std::to_string(progress.calendarCount) + ": " + std::to_string(progress.done) + " of "
            + counted(progress.total, "event"));
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
    out_.failure(what + ": " + reason, object);
}

} // namespace Tessel::App
