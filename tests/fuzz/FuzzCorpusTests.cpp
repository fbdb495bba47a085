#include "fuzz/FuzzTarget.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <set>

namespace Tessel::Fuzz {
namespace {

namespace fs = std::filesystem;

class FuzzCorpusTests : public testing::TestWithParam<Target> { };

TEST_P(FuzzCorpusTests, HoldsNoFinding)
{
    const auto& [name, take] = GetParam();
    std::size_t files = 0;
    for (const auto& entry : fs::directory_iterator(fs::path(TESSEL_FUZZ_CORPUS) / name)) {
        std::ifstream file(entry.path(), std::ios::binary);
        const std::string input(std::istreambuf_iterator<char>(file), {});
        EXPECT_NO_THROW(take(input)) << entry.path();
        ++files;
    }
    EXPECT_GT(files, 0u);
    EXPECT_NO_THROW(take(""));
}

INSTANTIATE_TEST_SUITE_P(
    Targets, FuzzCorpusTests, testing::ValuesIn(Target::all()), [](const auto& info) {
        std::string name(info.param.name);
        std::replace(name.begin(), name.end(), '-', '_');
        return name;
    });

TEST(FuzzCorpus, BelongsToTargets)
{
    std::set<std::string_view> names;
    for (const auto& target : Target::all())
        EXPECT_TRUE(names.insert(target.name).second) << target.name;
    for (const auto& entry : fs::directory_iterator(TESSEL_FUZZ_CORPUS))
        EXPECT_TRUE(names.contains(entry.path().filename().string())) << entry.path();
}

} // namespace
} // namespace Tessel::Fuzz
