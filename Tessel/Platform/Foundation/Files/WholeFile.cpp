#include "Tessel/Platform/Foundation/Files/WholeFile.h"

#include "Tessel/Platform/Foundation/Text/UUID.h"

#include <cerrno>
#include <fcntl.h>
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

std::optional<std::string> readWholeFile(const std::filesystem::path& path)
{
    const FileDescriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC));
    struct stat status;
    if (!file || ::fstat(file.number(), &status) != 0) return std::nullopt;

    std::string bytes;
    std::size_t size = 0;
    // One more than the size tells: the read that finds the end needs room too.
    bytes.resize(std::size_t(status.st_size) + 1);
    for (;;) {
        const auto count = ::read(file.number(), bytes.data() + size, bytes.size() - size);
        if (count < 0 && errno == EINTR) continue;
        if (count < 0) return std::nullopt;
        if (count == 0) break;
        size += std::size_t(count);
        if (size == bytes.size()) bytes.resize(2 * size);
    }
    bytes.resize(size);
    return bytes;
}

bool writeWholeFile(const std::filesystem::path& path, std::string_view bytes)
{
    auto temporary = path;
    temporary += ".";
    temporary += makeUUID();
    FileDescriptor file(::open(temporary.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666));
    if (!file) return false;

    struct stat old;
    if (::stat(path.c_str(), &old) == 0) ::fchmod(file.number(), old.st_mode & 07777);
    const bool written = writeAll(file.number(), bytes) && ::fsync(file.number()) == 0
        && file.close() && ::rename(temporary.c_str(), path.c_str()) == 0;
    if (!written) ::unlink(temporary.c_str());
    return written;
}

} // namespace Tessel
