#pragma once

#include "Tessel/CaldavLibrary/Models/MRVCalendar.h"
#include "Tessel/CaldavLibrary/Operation/MRVOperation.h"

#include <memory>

namespace Tessel {

/// Tells the sync delegate, on a worker thread, that a calendar's events are synced. The closing
/// step of a full sync has no calendar and tells nothing.
class MRVEventsSyncCompleteOperation final : public MRVOperation {
public:
    std::shared_ptr<MRVCalendar> calendar; ///< null for the closing step

    void main() override;
};

} // namespace Tessel
