#pragma once

#include <optional>
#include <string>

namespace Tessel::App {

/// The value of a variable of the environment; none where it is not set or empty.
std::optional<std::string> environmentValue(const char* name);

/// Has times told in the zone that TZ means, in whatever form it does (POSIX.1, 8.3; tzset(3)). Why
/// that cannot be done, if so: it gives rules that no zone of the database has. To be called while
/// the process has one thread.
std::optional<std::string> takeTimeZone();

} // namespace Tessel::App
