#include "Tessel/Platform/Foundation/Base/FatalError.h"

#include <atomic>
#include <cstdio>
#include <exception>

namespace Tessel {

namespace {
std::atomic<FatalErrorLog> fatalErrorLog {nullptr};
}

void setFatalErrorLog(FatalErrorLog log)
{
    fatalErrorLog = log;
}

void fatalError(std::string_view message, const CallSite& site)
{
    if (const auto log = fatalErrorLog.load()) log(message, site);
    std::fprintf(stderr, "Tessel: fatal error: %.*s (%s:%d, %s)\n",
        static_cast<int>(message.size()), message.data(), site.file, site.line, site.function);
    std::fflush(stderr);
    std::terminate();
}

} // namespace Tessel
