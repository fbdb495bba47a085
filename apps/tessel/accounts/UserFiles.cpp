#include "apps/tessel/accounts/UserFiles.h"

#include "apps/tessel/accounts/FileReplacement.h"
#include "apps/tessel/accounts/Stop.h"
#include "apps/tessel/output/Environment.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>

#include <cerrno>
#include <system_error>

namespace Tessel::App {

namespace {

namespace fs = std::filesystem;

fs::path folder(const char* variable, const char* below)
{
    // A relative path counts as none (as the XDG base directories want it).
    const auto own = environmentValue(variable);
    if (own && own->starts_with('/')) return fs::path(*own) / "tessel";
    const auto home = environmentValue("HOME");
    if (!home || !home->starts_with('/'))
        throw Stop::storage(
            std::string("There is no folder for your files: HOME is not set, nor is ")
                .append(variable)
                .append("."));
    return fs::path(*home) / below / "tessel";
}

} // namespace

fs::path settingsFolder()
{
    return folder("XDG_CONFIG_HOME", ".config");
}

fs::path dataFolder()
{
    return folder("XDG_DATA_HOME", ".local/share");
}

UserFile::UserFile(fs::path path)
    : path_(std::move(path))
{
}

std::optional<std::string> UserFile::read() const
{
    std::error_code error;
    if (!fs::exists(path_, error) && !error) return std::nullopt;
    return OpenFile(path_, O_RDONLY).readAll();
}

void UserFile::change(
    const std::function<std::string(const std::optional<std::string>&)>& change) const
{
    const auto parent = path_.parent_path();
    std::error_code error;
    fs::create_directories(parent.parent_path(), error);
    if (!fs::exists(parent, error) && ::mkdir(parent.c_str(), 0700) != 0 && errno != EEXIST)
        throw Stop::storage(
            parent.string() + " cannot be made: " + std::generic_category().message(errno) + ".");
    const OpenFile lock(parent, O_RDONLY | O_DIRECTORY);
    lock.check(::flock(lock.number(), LOCK_EX) == 0);
    FileReplacement next(path_, FileReplacement::Readers::user);
    next.write(change(read()));
    next.finish();
}

} // namespace Tessel::App
