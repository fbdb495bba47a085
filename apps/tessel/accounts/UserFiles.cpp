#include "apps/tessel/accounts/UserFiles.h"

#include "apps/tessel/accounts/Stop.h"
#include "apps/tessel/output/Environment.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <fstream>
#include <iterator>
#include <system_error>

namespace Tessel::App {

namespace {

namespace fs = std::filesystem;

fs::path folder(const char* variable, const char* below)
{
    // A relative path counts as none (XDG Base Directory Specification).
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

class OpenFile {
public:
    OpenFile(const fs::path& path, int flags)
        : path_(path)
        , number_(::open(path.c_str(), flags | O_CLOEXEC, 0600))
    {
        if (number_ < 0) fail();
    }
    ~OpenFile() { ::close(number_); }
    OpenFile(const OpenFile&) = delete;
    OpenFile& operator=(const OpenFile&) = delete;

    int number() const { return number_; }
    void check(bool isDone) const
    {
        if (!isDone) fail();
    }

private:
    [[noreturn]] void fail() const
    {
        throw Stop::storage(
            path_.string() + " cannot be written: " + std::generic_category().message(errno) + ".");
    }

    const fs::path path_;
    const int number_;
};

void write(const fs::path& path, const std::string& text)
{
    const OpenFile file(path, O_WRONLY | O_CREAT | O_TRUNC);
    for (std::size_t written = 0; written < text.size();) {
        const auto count = ::write(file.number(), text.data() + written, text.size() - written);
        file.check(count > 0);
        written += static_cast<std::size_t>(count);
    }
    file.check(::fsync(file.number()) == 0);
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
    std::ifstream file(path_, std::ios::binary);
    if (!file) {
        std::error_code error;
        if (!fs::exists(path_, error) && !error) return std::nullopt;
        throw Stop::storage(path_.string() + " cannot be read.");
    }
    return std::string(std::istreambuf_iterator<char>(file), {});
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
    const auto next = path_.string() + ".new";
    write(next, change(read()));
    lock.check(::rename(next.c_str(), path_.c_str()) == 0 && ::fsync(lock.number()) == 0);
}

} // namespace Tessel::App
