#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

namespace Tessel {

/// All bytes of an ordinary file; none when it cannot be read, is a pipe, a device or a directory,
/// or holds more than `Limits::fileBytes` or than there is memory.
std::optional<std::string> readWholeFile(const std::filesystem::path& path);

/// Replaces a file atomically: a reader sees the old bytes or the new ones, which are first written
/// beside it under a hidden name. False when that fails; the file then is as it was.
bool writeWholeFile(const std::filesystem::path& path, std::string_view bytes);

} // namespace Tessel
