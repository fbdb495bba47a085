#include "Tessel/Platform/Foundation/Files/Bundle.h"

#include <algorithm>
#include <string>
#include <system_error>
#include <vector>

#include <dlfcn.h>
#include <link.h>

namespace Tessel {

namespace {

namespace fs = std::filesystem;

/// The file of the program or shared object that this code is part of; empty when unknown.
fs::path moduleFile()
{
    static const char inThisModule = 0;
    Dl_info info {};
    link_map* map = nullptr;
    if (!dladdr1(&inThisModule, &info, reinterpret_cast<void**>(&map), RTLD_DL_LINKMAP)) return {};

    // A program's own name is what its caller chose to call it, not its file.
    const bool isProgram = !map || !map->l_name || !*map->l_name;
    std::error_code error;
    const auto file = fs::canonical(isProgram ? "/proc/self/exe" : map->l_name, error);
    return error ? fs::path() : file;
}

fs::path libraryDirectory()
{
    const auto module = moduleFile().parent_path();
    std::vector<fs::path> candidates;
    // "lib" and "bin" lie beside "share"; "lib/x86_64-linux-gnu" lies one deeper.
    if (!module.empty()) candidates = {module / "../share/Tessel", module / "../../share/Tessel"};
    for (const auto* const directory : {TESSEL_DATA_DIRECTORIES})
        candidates.emplace_back(directory);

    const auto exists = [](const fs::path& path) {
        std::error_code error;
        return fs::is_directory(path, error);
    };
    const auto found = std::find_if(candidates.begin(), candidates.end(), exists);
    return (found == candidates.end() ? candidates.back() : *found).lexically_normal();
}

} // namespace

Bundle::Bundle(fs::path directory)
    : directory_(std::move(directory))
{
}

const Bundle& Bundle::library()
{
    static const auto& bundle = *new Bundle(libraryDirectory());
    return bundle;
}

Bundle Bundle::bundle(std::string_view name) const
{
    return Bundle(directory_ / name);
}

std::optional<fs::path> Bundle::pathForResource(std::string_view name, std::string_view type) const
{
    if (name.find_first_of(std::string_view("/\0", 2)) != name.npos) return std::nullopt;
    std::error_code error;
    auto path = directory_ / (std::string(name) + "." + std::string(type));
    if (!fs::is_regular_file(path, error)) return std::nullopt;
    return path;
}

} // namespace Tessel
