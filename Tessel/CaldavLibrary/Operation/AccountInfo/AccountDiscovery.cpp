#include "Tessel/CaldavLibrary/Operation/AccountInfo/AccountDiscovery.h"

#include "Tessel/CaldavLibrary/Extensions/XMLDocumentText.h"
#include "Tessel/CaldavLibrary/Extensions/XMLNamespace.h"
#include "Tessel/CaldavLibrary/Operation/MRVOperation.h"

#include <string_view>
#include <utility>

namespace Tessel::AccountDiscovery {

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

void apply(const std::string& key, const Parser::Value& value, MRVAccount& account)
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

std::string propfindBody(std::initializer_list<Property> properties)
{
    auto propfind = GDataXMLElement::elementWithName("propfind", XMLNamespace::dav);
    auto prop = propfind.addElement("prop", XMLNamespace::dav);
    for (const auto& [name, uri] : properties)
        prop.addElement(name, uri);
    MRVOperation::addXMLNamespaces(propfind);
    return xmlDocumentText(propfind);
}

void apply(
    const Parser::Details& details, std::initializer_list<const char*> keys, MRVAccount& account)
{
    for (const auto key : keys) {
        const auto found = details.find(key);
        if (found != details.end()) apply(found->first, found->second, account);
    }
}

} // namespace Tessel::AccountDiscovery
