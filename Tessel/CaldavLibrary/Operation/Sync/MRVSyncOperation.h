#pragma once

#include "Tessel/CaldavLibrary/Operation/MRVOperation.h"

namespace Tessel {

/// The full sync: the calendars first, then the events of every added and every edited calendar,
/// one after another, then the closing step, all on the client's `syncQueue`. Deleted calendars get
/// no event sync. It finishes once it has queued its work; when the calendar sync never finishes,
/// neither does this operation.
class MRVSyncOperation final : public MRVOperation {
public:
    void main() override;
};

} // namespace Tessel
