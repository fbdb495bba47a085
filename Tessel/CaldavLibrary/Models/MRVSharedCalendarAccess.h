#pragma once

#include "Tessel/Platform/Foundation/Base/RawValue.h"

namespace Tessel {

/// What a sharee may do with a shared calendar.
enum class MRVSharedCalendarAccess { readOnly = 0, readWrite = 1 };

constexpr bool isRawValue(MRVSharedCalendarAccess, int value)
{
    return value == 0 || value == 1;
}

} // namespace Tessel
