#pragma once

#include <filesystem>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace Tessel::Test {

/// The project's C++ files, by their paths from the root, and what each includes.
class SourceTree {
public:
    struct Include {
        std::string name; ///< a path from the root, or for other people's files as it is written
        bool isOwn;
    };

    explicit SourceTree(std::filesystem::path root);

    const std::map<std::string, std::vector<Include>>& files() const { return files_; }
    const std::vector<Include>& includes(const std::string& file) const { return files_.at(file); }

    std::string text(const std::string& file) const;

    /// Everything that `file` reaches, itself included.
    std::vector<std::string> reachable(const std::string& file) const;

private:
    std::vector<Include> read(const std::string& file) const;

    std::filesystem::path root_;
    std::map<std::string, std::vector<Include>> files_;
};

/// Whether the include is one of the C++ standard library.
bool isStandard(const SourceTree::Include& include);

} // namespace Tessel::Test
