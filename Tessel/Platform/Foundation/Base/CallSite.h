#pragma once

namespace Tessel {

/// Where a call was written: taken by default arguments, so that a log line or a stopped process
/// names the caller and not the helper. (`std::source_location` is missing under clang 14.)
struct CallSite {
    const char* file; ///< as the compiler names it
    const char* function; ///< without its parameters
    int line; ///< from 1

    /// The place of the call, as a default argument.
    static constexpr CallSite current(const char* file = __builtin_FILE(),
        const char* function = __builtin_FUNCTION(), int line = __builtin_LINE())
    {
        return {file, function, line};
    }

    /// This place under the name of the function whose step or continuation it is; a continuation's
    /// own name is "operator()".
    static constexpr CallSite within(
        const char* function, const char* file = __builtin_FILE(), int line = __builtin_LINE())
    {
        return {file, function, line};
    }
};

} // namespace Tessel
