#include "apps/tessel/accounts/AccountList.h"

#include "apps/tessel/accounts/Stop.h"
#include "apps/tessel/output/Json.h"

#include <algorithm>
#include <cctype>

namespace Tessel::App {

namespace {

std::string hostOf(const std::string& origin)
{
    auto host = origin.substr(origin.find("://") + 3);
    const auto isDefault = [&](const char* scheme, const char* port) {
        return origin.starts_with(scheme) && host.ends_with(port);
    };
    if (isDefault("https:", ":443") || isDefault("http:", ":80")) host.erase(host.rfind(':'));
    return host;
}

bool isSame(const Account& a, const Account& b)
{
    return a.user == b.user && a.origin == b.origin;
}

std::vector<Account> read(const UserFile& file, const std::optional<std::string>& text)
{
    std::vector<Account> accounts;
    if (!text) return accounts;
    const auto unreadable = [&] {
        return Stop::storage(file.path().string()
            + " is not as tessel writes it. Mend it, or move it away and add your accounts again.");
    };
    try {
        const auto settings = Json::parse(*text);
        for (const auto& each : settings.at("accounts")) {
            accounts.push_back({.server = each.at("server"),
                .user = each.at("user"),
                .origin = each.at("origin"),
                .authority = each.value("authority", ""),
                .isInsecure = each.value("insecure", false),
                .hasKeptPassword = each.value("passwordKept", false),
                .address = each.value("address", "")});
            const auto& origin = accounts.back().origin;
            const auto known = Origin::of(origin);
            if (!known || known->text() != origin) throw unreadable();
        }
    } catch (const Json::exception&) {
        throw unreadable();
    }
    return accounts;
}

std::string written(const std::vector<Account>& accounts)
{
    auto list = Json::array();
    for (const auto& each : accounts) {
        list.push_back({{"server", each.server}, {"user", each.user}, {"origin", each.origin},
            {"authority", each.authority}, {"insecure", each.isInsecure},
            {"passwordKept", each.hasKeptPassword}, {"address", each.address}});
    }
    return Json {{"accounts", list}}.dump(2, ' ', false, Json::error_handler_t::replace) + "\n";
}

} // namespace

std::string Account::name() const
{
    return user + "@" + hostOf(origin);
}

std::filesystem::path Account::file(const std::string& ending) const
{
    std::string safe;
    for (const char c : user + "@" + origin.substr(origin.find("://") + 3)) {
        const auto octet = static_cast<unsigned char>(c);
        if (std::isalnum(octet) || c == '.' || c == '-' || c == '_' || c == '@') {
            safe += c;
        } else {
            constexpr auto digits = "0123456789abcdef";
            safe.append({'%', digits[octet >> 4], digits[octet & 15]});
        }
    }
    return dataFolder() / (safe + ending);
}

AccountList::AccountList()
    : file_(settingsFolder() / "accounts.json")
{
}

std::vector<Account> AccountList::all() const
{
    return read(file_, file_.read());
}

bool AccountList::put(Account account)
{
    bool isNew = false;
    file_.change([&](const auto& text) {
        auto accounts = read(file_, text);
        const auto same = std::find_if(accounts.begin(), accounts.end(),
            [&](const auto& each) { return isSame(each, account); });
        isNew = same == accounts.end();
        if (isNew) {
            accounts.push_back(account);
        } else {
            account.hasKeptPassword |= same->hasKeptPassword;
            if (account.address.empty()) account.address = same->address;
            *same = account;
        }
        return written(accounts);
    });
    return isNew;
}

void AccountList::remove(const Account& account)
{
    file_.change([&](const auto& text) {
        auto accounts = read(file_, text);
        std::erase_if(accounts, [&](const auto& each) { return isSame(each, account); });
        return written(accounts);
    });
}

} // namespace Tessel::App
