#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace Tessel::App {

/// "1 event", "2 events".
std::string counted(std::size_t count, const std::string& thing);

/// With a comma between each two.
std::string joined(const std::vector<std::string>& words);

} // namespace Tessel::App
