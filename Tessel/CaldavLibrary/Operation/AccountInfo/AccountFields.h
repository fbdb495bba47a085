#pragma once

#include "Tessel/CaldavLibrary/Models/MRVAccount.h"
#include "Tessel/CaldavLibrary/Parsers/MRVAccountDetailsParser.h"

#include <initializer_list>

namespace Tessel {

/// Copies the details that are present into the account, in the order of `keys`; a key that is
/// absent or of another type leaves its field as it was.
void setAccountFields(MRVAccount& account, const MRVAccountDetailsParser::Details& details,
    std::initializer_list<const char*> keys);

} // namespace Tessel
