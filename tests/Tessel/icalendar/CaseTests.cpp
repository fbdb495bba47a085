#include "tests/Tessel/icalendar/TreeDump.h"
#include "tests/support/CaseFile.h"

#include <gtest/gtest.h>

namespace Tessel {
namespace {

class CaseTests : public testing::TestWithParam<Case> { };

TEST_P(CaseTests, ReadsAndWrites)
{
    const auto& sections = GetParam().sections;
    ASSERT_TRUE(sections.contains("input"));
    ASSERT_EQ(sections.size(), 1 + sections.count("tree") + sections.count("text"));
    ASSERT_GT(sections.size(), 1u);

    CGICalendar calendar;
    EXPECT_TRUE(calendar.parseWithString(sections.at("input")));
    EXPECT_TRUE(calendar.parserStack.empty());
    // Writing does not look at each node of the tree, the dump does.
    const auto text = calendar.description();
    if (sections.contains("tree")) {
        EXPECT_EQ(treeDump(calendar), sections.at("tree"));
    }
    if (sections.contains("text")) {
        EXPECT_EQ(text, sections.at("text"));
    }
    EXPECT_EQ(calendar.description(), text);
}

INSTANTIATE_TEST_SUITE_P(Cases, CaseTests, testing::ValuesIn(readCases(TESSEL_TEST_DATA "/cases")),
    [](const auto& info) { return info.param.name; });

} // namespace
} // namespace Tessel
