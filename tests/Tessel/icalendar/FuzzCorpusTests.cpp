#include "fuzz/ICalendarRoundTrip.h"

#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>

namespace Tessel {
namespace {

TEST(FuzzCorpusTests, EveryInputSurvivesARoundTrip)
{
    std::size_t files = 0;
    for (const auto& entry : std::filesystem::directory_iterator(TESSEL_FUZZ_CORPUS)) {
        std::ifstream file(entry.path(), std::ios::binary);
        const std::string bytes(std::istreambuf_iterator<char>(file), {});
        EXPECT_EQ(iCalendarRoundTripFault(bytes), "") << entry.path();
        ++files;
    }
    EXPECT_GT(files, 0u);
}

} // namespace
} // namespace Tessel
