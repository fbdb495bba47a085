#include "apps/tessel/accounts/OpenFile.h"

#include "apps/tessel/accounts/Stop.h"

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <system_error>

namespace Tessel::App {

OpenFile::OpenFile(
    const std::filesystem::path& path, int flags, mode_t mode, const std::string& name)
    : name_(name.empty() ? path.string() : name)
    , what_((flags & O_ACCMODE) == O_RDONLY ? " cannot be read: " : " cannot be written: ")
    , number_(::open(path.c_str(), flags | O_CLOEXEC, mode))
{
    check(number_ >= 0);
}

OpenFile::OpenFile(int number, std::string name)
    : name_(std::move(name))
    , what_(" cannot be read: ")
    , number_(number)
{
    check(number_ >= 0);
}

OpenFile::~OpenFile()
{
    ::close(number_);
}

void OpenFile::check(bool isDone) const
{
    if (isDone) return;
    throw Stop::storage(name_ + what_ + std::generic_category().message(errno) + ".");
}

std::string OpenFile::readAll() const
{
    std::string text;
    std::array<char, 65'536> piece {};
    for (;;) {
        const auto count = ::read(number_, piece.data(), piece.size());
        check(count >= 0);
        if (count == 0) return text;
        text.append(piece.data(), static_cast<std::size_t>(count));
    }
}

void OpenFile::write(std::string_view text) const
{
    while (!text.empty()) {
        const auto count = ::write(number_, text.data(), text.size());
        check(count > 0);
        text.remove_prefix(static_cast<std::size_t>(count));
    }
}

} // namespace Tessel::App
