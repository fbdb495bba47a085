#pragma once

#include "Tessel/CaldavLibrary/Models/MRVInviteStatus.h"
#include "Tessel/CaldavLibrary/Models/MRVSharedCalendarAccess.h"

#include <string>

namespace Tessel {

/// One person that a calendar is shared with.
struct MRVSharee {
    std::string email; ///< the calendar address without "mailto:"
    MRVSharedCalendarAccess access = MRVSharedCalendarAccess::readOnly; ///< what the sharee may do
    /// Where the invitation stands; on writing, what to do.
    MRVInviteStatus status = MRVInviteStatus::noResponse;
};

} // namespace Tessel
