#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

namespace Tessel {

/// All bytes of a file; none when it cannot be read.
std::optional<std::string> readWholeFile(const std::filesystem::path& path);

/// Replaces a file atomically: a reader sees the old bytes or the new ones. False when that fails;
/// the file then is as it was.
bool writeWholeFile(const std::filesystem::path& path, std::string_view bytes);

} // namespace Tessel
