#include "Tessel/CaldavLibrary/Operation/AccountInfo/AccountFields.h"

#include <string_view>
#include <utility>

namespace Tessel {

namespace {

using Parser = MRVAccountDetailsParser;
using URLField = std::optional<std::string> MRVAccount::*;

constexpr std::pair<std::string_view, URLField> urlFields[] = {
    {Parser::principalURLKey, &MRVAccount::principalURL},
    {Parser::calendarHomeURLKey, &MRVAccount::calendarHomeURL},
    {Parser::scheduleInboxURLKey, &MRVAccount::scheduleInboxURL},
    {Parser::scheduleOutboxURLKey, &MRVAccount::scheduleOutboxURL},
    {Parser::scheduleDefaultURLKey, &MRVAccount::scheduleDefaultURL},
    {Parser::notificationURLKey, &MRVAccount::notificationURL},
};

void setField(MRVAccount& account, const std::string& key, const Parser::Value& value)
{
    if (key == Parser::calendarAddressSetKey) {
        if (const auto set = std::get_if<std::vector<std::string>>(&value)) {
            account.calendarUserAddressSet = *set;
        }
        return;
    }
    const auto url = std::get_if<std::string>(&value);
    if (!url) return;
    for (const auto& [fieldKey, field] : urlFields) {
        if (key == fieldKey) account.*field = *url;
    }
}

} // namespace

void setAccountFields(
    MRVAccount& account, const Parser::Details& details, std::initializer_list<const char*> keys)
{
    for (const auto key : keys) {
        const auto found = details.find(key);
        if (found != details.end()) setField(account, found->first, found->second);
    }
}

} // namespace Tessel
