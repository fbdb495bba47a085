#pragma once

#include <filesystem>
#include <map>
#include <string>
#include <vector>

namespace Tessel {

/// One case of a text file, which says its own format before the first: "=== title", then sections,
/// each "--- name" and its text to the next marker; a blank line before the next case is not part
/// of one. In a section these stand for what a text file does not show: ␠ a space, ␍ CR, ␀ NUL, ␋
/// VT, ␌ FF, ⟦85⟧ any byte, and ␄ at the end of a line for no line feed there.
struct Case {
    std::string name; ///< of the file and the title, as a test can be called
    std::map<std::string, std::string> sections;
};

/// The cases of all files of a folder.
std::vector<Case> readCases(const std::filesystem::path& folder);

} // namespace Tessel
