#pragma once

#include "Tessel/CaldavLibrary/Models/MRVNotificationType.h"

#include <string>

namespace Tessel {

/// One resource in the listing of the notification collection.
struct MRVNotificationInfo {
    const std::string href; ///< the resource's path as the server wrote it
    const MRVNotificationType notificationType = MRVNotificationType::unknown;
};

} // namespace Tessel
