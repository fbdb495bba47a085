#pragma once

#include "Tessel/Platform/Foundation/Base/RawValue.h"

namespace Tessel {

/// Where an invitation to share a calendar stands.
enum class MRVInviteStatus { accepted = 0, declined = 1, noResponse = 2, deleted = 3 };

constexpr bool isRawValue(MRVInviteStatus, int value)
{
    return value >= 0 && value <= 3;
}

} // namespace Tessel
