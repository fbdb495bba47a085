#include "tests/structure/SourceTree.h"

#include <fstream>
#include <iterator>
#include <regex>
#include <set>
#include <stdexcept>

namespace Tessel::Test {

namespace fs = std::filesystem;

namespace {

constexpr std::string_view topDirectories[]
    = {"Resources", "Tessel", "apps", "benchmarks", "examples", "fuzz", "tests"};

} // namespace

SourceTree::SourceTree(fs::path root)
    : root_(std::move(root))
{
    for (const auto top : topDirectories) {
        for (const auto& entry : fs::recursive_directory_iterator(root_ / top)) {
            const auto extension = entry.path().extension();
            if (extension != ".h" && extension != ".cpp") continue;
            files_.emplace(entry.path().lexically_relative(root_).string(), std::vector<Include>());
        }
    }
    for (auto& [file, includes] : files_)
        includes = read(file);
}

std::string SourceTree::text(const std::string& file) const
{
    std::ifstream stream(root_ / file);
    if (!stream) throw std::runtime_error("cannot read " + file);
    return {std::istreambuf_iterator<char>(stream), {}};
}

std::vector<SourceTree::Include> SourceTree::read(const std::string& file) const
{
    static const std::regex directive(
        R"re((?:^|\n)[ \t]*#[ \t]*include[ \t]*[<"]([^>"\n]+)[>"])re");
    const auto content = text(file);
    std::vector<Include> includes;
    for (std::sregex_iterator match(content.begin(), content.end(), directive), end; match != end;
         ++match) {
        const auto name = (*match)[1].str();
        includes.push_back({name, files_.contains(name)});
    }
    return includes;
}

std::vector<std::string> SourceTree::reachable(const std::string& file) const
{
    std::set<std::string> seen {file};
    std::vector<std::string> found {file};
    for (std::size_t i = 0; i < found.size(); ++i) {
        const auto current = found[i];
        for (const auto& include : includes(current)) {
            if (include.isOwn && seen.insert(include.name).second) found.push_back(include.name);
        }
    }
    return found;
}

bool isStandard(const SourceTree::Include& include)
{
    return !include.isOwn && include.name.find_first_of("./") == std::string::npos;
}

} // namespace Tessel::Test
