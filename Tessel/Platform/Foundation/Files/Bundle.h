#pragma once

#include <filesystem>
#include <optional>
#include <string_view>

namespace Tessel {

/// A directory of resource files.
class Bundle {
public:
    explicit Bundle(std::filesystem::path directory);

    /// The library's own resources, searched once: "share/Tessel" beside the directory of the
    /// program or shared object that holds the library, or one level above it; else, where a
    /// project builds the library within itself, the library's build directory; else the prefix
    /// that the library was configured for. A program that holds the static library, lies outside
    /// its prefix and was given it by "cmake --install --prefix" finds none.
    static const Bundle& library();

    const std::filesystem::path& directory() const { return directory_; }

    /// A bundle within this one; it need not exist.
    Bundle bundle(std::string_view name) const;

    /// The file "name.type" directly in this directory, or none. A name with a slash in it is none.
    std::optional<std::filesystem::path> pathForResource(
        std::string_view name, std::string_view type) const;

private:
    std::filesystem::path directory_;
};

} // namespace Tessel
