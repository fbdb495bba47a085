#pragma once

#include <filesystem>
#include <functional>
#include <optional>
#include <string>

namespace Tessel::App {

/// Where a user's programs keep their settings and their data (XDG base directories).
std::filesystem::path settingsFolder();
std::filesystem::path dataFolder();

/// A small file of the user's own (0600, in a folder 0700), which is there whole or not at all.
/// Members throw a `Stop` of storage.
class UserFile {
public:
    explicit UserFile(std::filesystem::path path);

    const std::filesystem::path& path() const { return path_; }
    std::optional<std::string> read() const; ///< none where there is no file
    /// Replaces it with what `change` makes of its content; other processes wait meanwhile.
    void change(const std::function<std::string(const std::optional<std::string>&)>& change) const;

private:
    std::filesystem::path path_;
};

} // namespace Tessel::App
