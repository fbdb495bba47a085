#pragma once

#include "Tessel/Platform/Foundation/Base/RawValue.h"

namespace Tessel {

/// The kind of server behind an account.
enum class MRVAccountType { google = 0, iCloud = 1, general = 2 };

constexpr bool isRawValue(MRVAccountType, int value)
{
    return value >= 0 && value <= 2;
}

} // namespace Tessel
