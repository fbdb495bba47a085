#pragma once

#include "Tessel/Platform/Plinth/Logger.h"

namespace Tessel {

/// The level of a line that a step or a continuation of an operation's `main` logs; the line names
/// `main`.
inline Plinth::LevelAtSite inMain(
    Plinth::Level level, const CallSite& site = CallSite::within("main"))
{
    return {level, site};
}

} // namespace Tessel
