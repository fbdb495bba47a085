#include "apps/tessel/accounts/FileReplacement.h"

#include <Tessel/Platform/Foundation/Text/UUID.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <system_error>

namespace Tessel::App {

namespace {

namespace fs = std::filesystem;

/// What a link leads to at last, whether or not that is there. Not for links to what no path leads
/// to: "/dev/stdout" may be one to "pipe:[123]".
fs::path targetOf(fs::path path)
{
    constexpr int mostLinks = 40;
    std::error_code error;
    for (int i = 0; i < mostLinks && fs::is_symlink(path, error); ++i) {
        auto next = fs::read_symlink(path, error);
        if (error) break;
        path = path.parent_path() / next;
    }
    return path;
}

bool canBeReplaced(const fs::path& path)
{
    std::error_code error;
    const auto status = fs::status(path, error);
    return !fs::exists(status) || fs::is_regular_file(status);
}

fs::path folderOf(const fs::path& path)
{
    return path.has_parent_path() ? path.parent_path() : fs::path(".");
}

} // namespace

FileReplacement::FileReplacement(const fs::path& path, Readers readers)
    : isReplaced_(canBeReplaced(path))
    , target_(isReplaced_ ? targetOf(path) : path)
{
    if (!isReplaced_) {
        file_.emplace(target_, O_WRONLY);
        return;
    }
    const auto beside = folderOf(target_) / ("." + makeUUID());
    const bool isUsers = readers == Readers::user;
    file_.emplace(beside, O_WRONLY | O_CREAT | O_EXCL, isUsers ? 0600 : 0666, path.string());
    written_ = beside;
    struct stat old { };
    if (!isUsers && ::stat(target_.c_str(), &old) == 0)
        file_->check(::fchmod(file_->number(), old.st_mode & 0777) == 0);
}

FileReplacement::~FileReplacement()
{
    if (!written_.empty()) ::unlink(written_.c_str());
}

bool FileReplacement::isStandardOutput() const
{
    struct stat own { };
    struct stat standard { };
    return ::fstat(file_->number(), &own) == 0 && ::fstat(STDOUT_FILENO, &standard) == 0
        && own.st_dev == standard.st_dev && own.st_ino == standard.st_ino;
}

void FileReplacement::write(std::string_view text)
{
    constexpr std::size_t piece = 65'536;
    buffer_ += text;
    if (buffer_.size() >= piece) flush();
}

void FileReplacement::flush()
{
    file_->write(buffer_);
    buffer_.clear();
}

void FileReplacement::finish()
{
    flush();
    if (!isReplaced_) return;
    file_->check(::fsync(file_->number()) == 0);
    file_->check(::rename(written_.c_str(), target_.c_str()) == 0);
    written_.clear();
    const OpenFile folder(folderOf(target_), O_RDONLY | O_DIRECTORY);
    folder.check(::fsync(folder.number()) == 0);
}

} // namespace Tessel::App
