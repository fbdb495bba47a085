#pragma once

#include "Tessel/CaldavLibrary/Models/MRVAccount.h"
#include "Tessel/CaldavLibrary/Parsers/MRVAccountDetailsParser.h"

#include <initializer_list>
#include <string>

/// What the discovery steps share.
namespace Tessel::AccountDiscovery {

struct Property {
    const char* name;
    const char* uri;
};

/// A propfind document that asks for the properties, in this order.
std::string propfindBody(std::initializer_list<Property> properties);

/// Copies the details that are present into the account, in the order of `keys`; a key that is
/// absent or of another type leaves its field as it was.
void apply(const MRVAccountDetailsParser::Details& details, std::initializer_list<const char*> keys,
    MRVAccount& account);

} // namespace Tessel::AccountDiscovery
