#include "apps/tessel/output/Environment.h"

#include <Tessel/Platform/Foundation/Time/TimeZone.h>

#include <cstdlib>
#include <ctime>

namespace Tessel::App {

namespace {

/// Whether the library tells times as the system does, all through the year.
bool tellsTheSystemsTime()
{
    constexpr std::time_t month = 30 * 86'400;
    const auto here = TimeZone::local();
    const auto now = std::time(nullptr);
    for (auto time = now; time < now + 12 * month; time += month) {
        std::tm local {};
        ::localtime_r(&time, &local);
        if (here.secondsFromGMT(Date::fromMillisecondsSince1970(time * 1000)) != local.tm_gmtoff)
            return false;
    }
    return true;
}

} // namespace

std::optional<std::string> environmentValue(const char* name)
{
    // NOLINTNEXTLINE(concurrency-mt-unsafe): nothing here changes the environment
    const auto* const value = std::getenv(name);
    if (!value || !*value) return std::nullopt;
    return value;
}

std::optional<std::string> takeTimeZone()
{
    const auto given = environmentValue("TZ");
    if (!given) return std::nullopt;
    constexpr std::string_view folder = "/zoneinfo/";
    auto name = given->substr(given->starts_with(':') ? 1 : 0);
    if (const auto at = name.find(folder); name.starts_with('/') && at != name.npos)
        name.erase(0, at + folder.size());
    // NOLINTNEXTLINE(concurrency-mt-unsafe): there is one thread yet
    if (TimeZone::withIdentifier(name)) ::setenv("TZ", name.c_str(), 1);
    ::tzset();
    if (tellsTheSystemsTime()) return std::nullopt;
    return "TZ is \"" + *given
        + "\", which is no time zone of the database: set it to one such as Europe/Berlin.";
}

} // namespace Tessel::App
