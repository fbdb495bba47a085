#pragma once

#include "Tessel/Platform/Foundation/Time/CivilDate.h"

namespace Tessel {

/// The week rule of ICU's default locale, which a host may change at any time.
WeekRule currentLocaleWeekRule();

/// The week rule of the root locale.
WeekRule rootLocaleWeekRule();

} // namespace Tessel
