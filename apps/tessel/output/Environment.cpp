#include "apps/tessel/output/Environment.h"

#include <cstdlib>

namespace Tessel::App {

std::optional<std::string> environmentValue(const char* name)
{
    // NOLINTNEXTLINE(concurrency-mt-unsafe): nothing here changes the environment
    const auto* const value = std::getenv(name);
    if (!value || !*value) return std::nullopt;
    return value;
}

} // namespace Tessel::App
