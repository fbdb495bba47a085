#pragma once

#include "Tessel/Platform/Foundation/Base/RawValue.h"

namespace Tessel {

/// What a resource of the notification collection is: an invitation, or the answer to one.
enum class MRVNotificationType { unknown = 0, notification = 1, reply = 2 };

constexpr bool isRawValue(MRVNotificationType, int value)
{
    return value >= 0 && value <= 2;
}

} // namespace Tessel
