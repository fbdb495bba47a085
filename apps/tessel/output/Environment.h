#pragma once

#include <optional>
#include <string>

namespace Tessel::App {

/// The value of a variable of the environment; none where it is not set or empty.
std::optional<std::string> environmentValue(const char* name);

} // namespace Tessel::App
