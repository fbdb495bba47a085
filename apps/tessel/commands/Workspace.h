#pragma once

#include "apps/tessel/accounts/AccountList.h"
#include "apps/tessel/accounts/Stop.h"
#include "apps/tessel/commands/AccountStore.h"
#include "apps/tessel/commands/Interruption.h"
#include "apps/tessel/output/Output.h"
#include "apps/tessel/output/Reason.h"

#include <Tessel/TesselSession.h>

#include <memory>
#include <optional>
#include <string>
#include <type_traits>

namespace Tessel::App {

/// What every command understands.
struct Options {
    std::string account; ///< number, name or user; may be empty where there is one
    std::string authority;
    std::string trace; ///< "body" for bodies too
    int timeoutSeconds = 60;
    bool isInsecure = false;
    bool isJson = false;
    bool isOffline = false;
};

/// What a command works with: the account, its session and its store, each made when it is first
/// asked for. Whatever fails throws a `Stop`.
class Workspace {
public:
    explicit Workspace(Options options);

    const Options& options() const { return options_; }
    const Output& out() const { return out_; }

    const Account& account(); ///< with what the options say otherwise
    std::shared_ptr<AccountStore> store();
    Session& session();
    /// The same, with the failure where the server cannot be reached or does not answer. It is
    /// tried once.
    Result<Session*> sessionIfReached();
    /// Opens an account that this need not be.
    Result<Session::Opened> open(const Account& account, const Credential& credential) const;

    /// The account's calendars as the server lists them, offline as they are held.
    std::vector<StoredCalendar> calendars();
    /// What is held; brought first where nothing was ever synced.
    std::vector<StoredCalendar> heldCalendars();
    /// The one that the user means: by name, place, or the place's last part.
    StoredCalendar calendar(const std::string& name);
    /// The same among those that are held; one of which nothing was ever brought is brought first.
    StoredCalendar heldCalendar(const std::string& name);

    /// Stops where changes of the calendar, or any at all, wait to be sent: they would be lost.
    void requireNothingWaits(const std::string& calendar = {});

    /// Has the store know at once the calendar that was made or changed at that place.
    void hold(const std::string& place);

    /// Syncs, names what could not be brought, and tells the counts unless they are left out.
    void sync(const std::string& calendar = {}, bool tellsCounts = true);

    /// What a call or a step gave, or the end of the command.
    template <class T> T got(Result<T> result) const
    {
        if (!result) throw Stop(result.failure());
        if constexpr (!std::is_void_v<T>) return std::move(result).value();
    }
    template <class T> T got(const Call<T>& call) const { return got(Interruption::await(call)); }

    /// Names a thing that could not be done while the rest goes on: the status will say so.
    void leaveOut(const std::string& what, const std::string& reason, const Json& more = {});
    int status() const { return isPartly_ ? donePartly : done; }

private:
    using Calendars = std::vector<StoredCalendar>;
    static std::optional<StoredCalendar> find(const Calendars& calendars, const std::string& name);
    static StoredCalendar choose(const Calendars& calendars, const std::string& name);
    bool wasBrought(const StoredCalendar& calendar);

    const Options options_;
    const Output out_;
    std::optional<Account> account_;
    std::shared_ptr<AccountStore> store_;
    std::optional<Result<Session::Opened>> session_; ///< or why there is none
    bool isPartly_ = false;
};

/// Whether the server was not reached, or not in time, and so has done nothing.
bool isUnreached(const Failure& failure);

/// What a calendar is called: its name, else the last part of its place.
std::string nameOf(const StoredCalendar& calendar);

} // namespace Tessel::App
