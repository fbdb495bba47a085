#include "tests/structure/SourceTree.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <iterator>
#include <regex>
#include <set>
#include <sstream>
#include <utility>

using namespace Tessel::Test;

namespace {

namespace fs = std::filesystem;

const SourceTree& tree()
{
    static const SourceTree tree(TESSEL_SOURCE_DIRECTORY);
    return tree;
}

/// The words of a list file, comments left out.
std::set<std::string> words(const std::string& file)
{
    std::set<std::string> found;
    std::istringstream lines(tree().text(file));
    for (std::string line; std::getline(lines, line);) {
        std::istringstream text(line.substr(0, line.find('#')));
        for (std::string word; text >> word;) {
            word.erase(0, word.find_first_not_of('('));
            word.erase(word.find_last_not_of(')') + 1);
            found.insert(word);
        }
    }
    return found;
}

/// Whether the nearest CMakeLists.txt above `file` lists it.
bool isListed(const fs::path& file)
{
    for (auto directory = file.parent_path(); !directory.empty();
         directory = directory.parent_path()) {
        const auto list = (directory / "CMakeLists.txt").string();
        if (!fs::exists(fs::path(TESSEL_SOURCE_DIRECTORY) / list)) continue;
        return words(list).contains(file.lexically_relative(directory).string());
    }
    return false;
}

} // namespace

TEST(Files, NamesAreUnique)
{
    std::map<std::string, std::string> placeOf;
    for (const auto& [file, includes] : tree().files()) {
        if (fs::path(file).filename() == "main.cpp") continue;
        const auto stem = fs::path(file).stem().string();
        const auto place = fs::path(file).replace_extension().string();
        EXPECT_EQ(placeOf.emplace(stem, place).first->second, place);
    }
}

TEST(Files, AllAreBuiltOrIncluded)
{
    std::set<std::string> included;
    for (const auto& [file, includes] : tree().files()) {
        for (const auto& include : includes) {
            if (include.isOwn) included.insert(include.name);
        }
    }
    for (const auto& [file, includes] : tree().files()) {
        if (file.ends_with(".cpp")) {
            EXPECT_TRUE(isListed(file)) << file << " is in no target";
        } else {
            EXPECT_TRUE(included.contains(file)) << file << " is never included";
        }
    }
}

TEST(PublicHeaders, AreWhatTheUmbrellasReach)
{
    auto listed = words("cmake/TesselPublicHeaders.cmake");
    std::erase_if(listed, [](const auto& word) { return !word.ends_with(".h"); });

    std::set<std::string> wanted;
    for (const auto* umbrella : {"Tessel/Tessel.h", "Tessel/TesselSession.h"})
        for (const auto& header : tree().reachable(umbrella))
            wanted.insert(header);
    EXPECT_EQ(listed, wanted);
    for (const auto& file : wanted) {
        for (const auto& include : tree().includes(file)) {
            EXPECT_TRUE(include.isOwn || isStandard(include))
                << file << " makes every host need " << include.name;
        }
    }
}

TEST(Documents, ShowTheExamplesThatCompile)
{
    const std::pair<const char*, const char*> shown[] {
        {"README.md", "examples/session/agenda.cpp"}, {"docs/client.md", "examples/calendars.cpp"}};
    for (const auto& [page, example] : shown)
        EXPECT_NE(
            tree().text(page).find("```cpp\n" + tree().text(example) + "```\n"), std::string::npos)
            << page;
}

TEST(Documents, PictureEveryFolder)
{
    const auto page = tree().text("docs/architecture.md");
    for (const auto& [file, includes] : tree().files()) {
        const auto folder = fs::path(file).parent_path();
        // The page shows operations as one folder.
        if (!file.starts_with("Tessel/") || file.find("/Operation/") != file.npos) continue;
        EXPECT_NE(page.find(folder.filename().string() + "/"), page.npos) << folder;
    }
}

TEST(Documents, LeadSomewhere)
{
    // Code has "](auto)".
    static const std::regex link(R"(\]\(([\w-]*[./][\w./-]*)(#[^)]*)?\))");
    const fs::path root(TESSEL_SOURCE_DIRECTORY);
    std::vector<fs::path> pages {root / "README.md"};
    for (const auto& entry : fs::directory_iterator(root / "docs"))
        if (entry.path().extension() == ".md") pages.push_back(entry.path());
    const auto readme = tree().text("README.md");
    for (const auto& page : pages) {
        const auto text = tree().text(page.lexically_relative(root));
        for (std::sregex_iterator found(text.begin(), text.end(), link), end; found != end; ++found)
            EXPECT_TRUE(fs::exists(page.parent_path() / (*found)[1].str()))
                << page << " leads to " << (*found)[1];
        const bool isNamed = page.filename() == "README.md"
            || readme.find("(docs/" + page.filename().string()) != readme.npos;
        EXPECT_TRUE(isNamed) << page << " is not in the README";
    }
}
