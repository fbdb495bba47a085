#pragma once

#include "Tessel/Platform/Foundation/Base/RawValue.h"

namespace Tessel {

/// What an alarm does (RFC 5545, 3.8.6.1).
enum class MRVAlarmAction { display = 0, email = 1, audio = 2 };

constexpr bool isRawValue(MRVAlarmAction, int value)
{
    return value >= 0 && value <= 2;
}

} // namespace Tessel
