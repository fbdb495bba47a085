#pragma once

#include "Tessel/Platform/Foundation/Base/CallSite.h"

#include <string_view>

namespace Tessel {

/// Receives the message of a fatal error before the process ends.
using FatalErrorLog = void (*)(std::string_view message, const CallSite& site);

/// Chooses who logs fatal errors besides standard error; null for nobody. Safe from any thread.
void setFatalErrorLog(FatalErrorLog log);

/// Stops the process: logs `message` with its call site, writes both to standard error and calls
/// `std::terminate`. For programming errors only, never for what a server or a user sent unless
/// the caller documents it.
[[noreturn]] void fatalError(std::string_view message, const CallSite& site = CallSite::current());

} // namespace Tessel
