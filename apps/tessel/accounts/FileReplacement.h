#pragma once

#include "apps/tessel/accounts/OpenFile.h"

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

namespace Tessel::App {

/// What takes the place of a file as a whole: it is written beside it until `finish`, and without
/// that the old one stays. A link stays one, to the new file; a pipe or a device, which nothing can
/// replace, is written as it goes. Members throw a `Stop` of storage.
class FileReplacement {
public:
    enum class Readers {
        user, ///< 0600
        asBefore, ///< as the old file has it; of a new one, as the user's files have it
    };

    FileReplacement(const std::filesystem::path& path, Readers readers);
    ~FileReplacement();
    FileReplacement(const FileReplacement&) = delete;
    FileReplacement& operator=(const FileReplacement&) = delete;

    void write(std::string_view text);
    void finish();
    /// Whether what else is said to standard output would be in it.
    bool isStandardOutput() const;

private:
    void flush();

    const bool isReplaced_; ///< else it is written as it goes
    const std::filesystem::path target_;
    std::filesystem::path written_; ///< what is to be removed; empty when it has been renamed
    std::optional<OpenFile> file_;
    std::string buffer_;
};

} // namespace Tessel::App
