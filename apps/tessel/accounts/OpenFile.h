#pragma once

#include <filesystem>
#include <string>
#include <string_view>

#include <sys/types.h>

namespace Tessel::App {

/// An open file, pipe or folder of this machine, closed at the end. Whatever fails throws a `Stop`
/// of storage that names it and says why.
class OpenFile {
public:
    /// `flags` as `open` has them; `mode` is that of a file that they make. Failures name it by
    /// `name`, where that is not empty.
    OpenFile(const std::filesystem::path& path, int flags, mode_t mode = 0600,
        const std::string& name = {});
    /// Takes over one that is open for reading.
    OpenFile(int number, std::string name);
    ~OpenFile();
    OpenFile(const OpenFile&) = delete;
    OpenFile& operator=(const OpenFile&) = delete;

    int number() const { return number_; }
    std::string readAll() const;
    void write(std::string_view text) const;
    /// Fails, for the reason in `errno`, unless something with the file is done.
    void check(bool isDone) const;

private:
    const std::string name_;
    const char* const what_;
    const int number_;
};

} // namespace Tessel::App
