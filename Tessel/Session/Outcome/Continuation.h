#pragma once

#include "Tessel/Session/Outcome/Result.h"

#include <functional>

namespace Tessel {

/// Runs a function on the host's own thread, soon and in order; it must return before or while it
/// runs it, and may be called from any thread.
using Executor = std::function<void(std::function<void()>)>;

/// What gets the result of a call: exactly once, on the host's executor, else on a thread of the
/// library that all calls of the session share: return soon.
template <class T> using Continuation = std::function<void(Result<T>)>;

} // namespace Tessel
