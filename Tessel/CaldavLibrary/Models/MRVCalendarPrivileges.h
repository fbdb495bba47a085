#pragma once

#include "Tessel/Platform/Foundation/Base/OptionSet.h"

namespace Tessel {

/// What the user may do with a calendar (RFC 3744, 5.4), one bit for each privilege that the server
/// names; no privilege implies another.
///
/// 1 all, 2 read, 4 write, 16 read-current-user-privilege-set, 64 write-properties,
/// 128 write-content, 256 read-free-busy. The bits 8 and 32 are free.
class MRVCalendarPrivileges : public OptionSet<MRVCalendarPrivileges> {
public:
    using OptionSet::OptionSet;
};

} // namespace Tessel
