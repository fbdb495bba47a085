#include "Tessel/Platform/Foundation/Base/FatalError.h"

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <exception>
#include <string>

namespace Tessel {

namespace {
constexpr std::size_t shownBytes = 1000;
std::atomic<FatalErrorLog> fatalErrorLog {nullptr};
} // namespace

void setFatalErrorLog(FatalErrorLog log)
{
    fatalErrorLog = log;
}

void fatalError(std::string_view message, const CallSite& site)
{
    if (const auto log = fatalErrorLog.load()) log(message, site);
    // It may quote what a server sent, which must not steer a terminal.
    std::string plain(message.substr(0, shownBytes));
    std::replace_if(
        plain.begin(), plain.end(), [](char c) { return c < ' ' || c > '~'; }, '?');
    std::fprintf(stderr, "Tessel: fatal error: %s (%s:%d, %s)\n", plain.c_str(), site.file,
        site.line, site.function);
    std::fflush(stderr);
    std::terminate();
}

} // namespace Tessel
