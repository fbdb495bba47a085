#include "Tessel/Platform/Foundation/Files/WholeFile.h"

#include "Tessel/Platform/Foundation/Base/Limits.h"
#include "Tessel/Platform/Foundation/Text/UUID.h"

#include <cerrno>
#include <fcntl.h>
#include <new>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace Tessel {

namespace {

class FileDescriptor {
public:
    explicit FileDescriptor(int number)
        : number_(number)
    {
    }
    FileDescriptor(const FileDescriptor&) = delete;
    FileDescriptor& operator=(const FileDescriptor&) = delete;
    ~FileDescriptor() { close(); }

    explicit operator bool() const { return number_ >= 0; }
    int number() const { return number_; }
    bool close() { return number_ < 0 || ::close(std::exchange(number_, -1)) == 0; }

private:
    int number_;
};

} // namespace

static bool writeAll(int file, std::string_view bytes)
{
    while (!bytes.empty()) {
        const auto count = ::write(file, bytes.data(), bytes.size());
        if (count < 0 && errno == EINTR) continue;
        if (count < 0) return false;
        bytes.remove_prefix(std::size_t(count));
    }
    return true;
}

static std::optional<std::string> readAll(int file, std::size_t expectedSize)
{
    std::string bytes;
    std::size_t size = 0;
    // One more than the size tells: the read that finds the end needs room too.
    bytes.resize(expectedSize + 1);
    for (;;) {
        const auto count = ::read(file, bytes.data() + size, bytes.size() - size);
        if (count < 0 && errno == EINTR) continue;
        if (count < 0) return std::nullopt;
        if (count == 0) break;
        size += std::size_t(count);
        if (size > Limits::fileBytes) return std::nullopt;
        if (size == bytes.size()) bytes.resize(2 * size);
    }
    bytes.resize(size);
    return bytes;
}

std::optional<std::string> readWholeFile(const std::filesystem::path& path)
{
    // Without O_NONBLOCK a pipe that nobody writes would be waited for.
    const FileDescriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    struct stat status { };
    if (!file || ::fstat(file.number(), &status) != 0 || !S_ISREG(status.st_mode))
        return std::nullopt;
    const auto size = std::size_t(status.st_size);
    // Memory that is not there is promised all the same: the size is judged before it is asked for.
    const auto memory = std::size_t(::sysconf(_SC_PHYS_PAGES)) * std::size_t(::getpagesize());
    if (size > Limits::fileBytes || size > memory) return std::nullopt;
    try {
        return readAll(file.number(), size);
    } catch (const std::bad_alloc&) {
        return std::nullopt;
    }
}

bool writeWholeFile(const std::filesystem::path& path, std::string_view bytes)
{
    // All names are taken relative to the directory: a path of ours is no longer than the caller's.
    const auto directory = path.has_parent_path() ? path.parent_path() : ".";
    const FileDescriptor parent(::open(directory.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
    const auto name = path.filename();
    std::string temporary = ".";
    temporary += makeUUID();
    FileDescriptor file(parent ? ::openat(parent.number(), temporary.c_str(),
                            O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666)
                               : -1);
    if (!file) return false;

    struct stat old { };
    if (::fstatat(parent.number(), name.c_str(), &old, 0) == 0)
        ::fchmod(file.number(), old.st_mode & 07777);
    const bool written = writeAll(file.number(), bytes) && ::fsync(file.number()) == 0
        && file.close()
        && ::renameat(parent.number(), temporary.c_str(), parent.number(), name.c_str()) == 0;
    if (!written) ::unlinkat(parent.number(), temporary.c_str(), 0);
    return written;
}

} // namespace Tessel
