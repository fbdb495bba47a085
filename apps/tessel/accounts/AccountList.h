#pragma once

#include "apps/tessel/accounts/UserFiles.h"

#include <Tessel/TesselSession.h>

#include <string>
#include <vector>

namespace Tessel::App {

/// An account that the user has added. One of the same user at the same origin is the same one,
/// however its server was spelled.
struct Account {
    std::string server; ///< as the user gave it
    std::string user;
    std::string origin; ///< as opening found it
    std::string authority = {}; ///< PEM file of whom to trust instead of the system's
    bool isInsecure = false; ///< may go over plain http
    bool hasKeptPassword = false; ///< the desktop was given its password
    std::string address = {}; ///< the user's own e-mail address, where it was given

    /// Such as "alice@cal.example.com".
    std::string name() const;
    /// A file of this account's own in the folder of data.
    std::filesystem::path file(const std::string& ending) const;
};

/// The accounts, in a file of the user's settings. No password is in it.
class AccountList {
public:
    AccountList();

    std::vector<Account> all() const;
    /// Adds one, or puts it in place of the same account; true for a new one. A password that is
    /// kept already stays known, as does an address unless another one is given.
    bool put(Account account);
    void remove(const Account& account);

private:
    const UserFile file_;
};

} // namespace Tessel::App
