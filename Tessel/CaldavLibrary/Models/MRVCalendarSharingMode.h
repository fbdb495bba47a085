#pragma once

#include "Tessel/Platform/Foundation/Base/OptionSet.h"

namespace Tessel {

/// How the server lets a calendar be shared: 1 can-be-shared, 2 can-be-published, 4 never-shared,
/// 8 never-publish.
class MRVCalendarSharingMode : public OptionSet<MRVCalendarSharingMode> {
public:
    using OptionSet::OptionSet;
};

} // namespace Tessel
