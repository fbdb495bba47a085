#include "Tessel/Session/Sync/Changes.h"

#include <algorithm>

namespace Tessel {

bool Changes::isComplete() const
{
    return std::all_of(calendars.begin(), calendars.end(),
        [](const auto& each) { return !each.failure && each.failed.empty(); });
}

} // namespace Tessel
