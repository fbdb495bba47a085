#pragma once

#include "Platform/Foundation/CivilDate.h"

namespace Tessel {

/// The week rule of ICU's default locale, which a host may change at any time.
WeekRule currentLocaleWeekRule();

/// The week rule of the root locale.
WeekRule rootLocaleWeekRule();

} // namespace Tessel
