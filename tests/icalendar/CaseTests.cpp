#include "icalendar/TreeDump.h"

#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <map>
#include <string>
#include <vector>

namespace Tessel {
namespace {

// A case file holds cases, each "=== title", then "--- input" and "--- tree" or "--- text" sections
// to the next marker; a blank line before the next case is not part of one. In a section these
// stand for what a text file does not show: ␠ a space, ␍ CR, ␀ NUL, ␋ VT, ␌ FF, ⟦85⟧ any byte, and
// ␄ at the end of a line for no line feed there.
struct Case {
    std::string name;
    std::map<std::string, std::string> sections;
};

std::string replacedAll(std::string text, std::string_view from, std::string_view to)
{
    for (auto at = text.find(from); at != text.npos; at = text.find(from, at + to.size())) {
        text.replace(at, from.size(), to);
    }
    return text;
}

std::string decoded(std::string text)
{
    text = replacedAll(text, "␄\n", "");
    text = replacedAll(text, "␠", " ");
    text = replacedAll(text, "␍", "\r");
    text = replacedAll(text, "␋", "\v");
    text = replacedAll(text, "␌", "\f");
    text = replacedAll(text, "␀", std::string(1, '\0'));
    const std::string open = "⟦";
    const std::string close = "⟧";
    for (auto at = text.find(open); at != text.npos; at = text.find(open, at + 1)) {
        const auto byte = char(std::stoi(text.substr(at + open.size(), 2), nullptr, 16));
        text.replace(at, open.size() + 2 + close.size(), 1, byte);
    }
    return text;
}

std::string identifier(std::string text)
{
    for (auto& c : text) {
        if (!std::isalnum(static_cast<unsigned char>(c))) c = '_';
    }
    return text;
}

std::vector<Case> readCases()
{
    std::vector<Case> cases;
    for (const auto& entry : std::filesystem::directory_iterator(TESSEL_TEST_DATA "/cases")) {
        std::ifstream file(entry.path());
        std::string* section = nullptr;
        for (std::string line; std::getline(file, line);) {
            if (line.starts_with("=== ")) {
                if (section && section->ends_with("\n\n")) section->pop_back();
                cases.push_back(
                    {identifier(entry.path().stem().string() + " " + line.substr(4)), {}});
                section = nullptr;
            } else if (line.starts_with("--- ")) {
                section = &cases.back().sections[line.substr(4)];
            } else if (section) {
                *section += line + "\n";
            }
        }
    }
    return cases;
}

class CaseTests : public testing::TestWithParam<Case> { };

TEST_P(CaseTests, ReadsAndWrites)
{
    const auto& sections = GetParam().sections;
    ASSERT_TRUE(sections.contains("input"));
    ASSERT_EQ(sections.size(), 1 + sections.count("tree") + sections.count("text"));
    ASSERT_GT(sections.size(), 1u);

    CGICalendar calendar;
    EXPECT_TRUE(calendar.parseWithString(decoded(sections.at("input"))));
    EXPECT_TRUE(calendar.parserStack.empty());
    if (sections.contains("tree")) {
        EXPECT_EQ(treeDump(calendar), decoded(sections.at("tree")));
    }
    if (sections.contains("text")) {
        EXPECT_EQ(calendar.description(), decoded(sections.at("text")));
    }
}

INSTANTIATE_TEST_SUITE_P(Cases, CaseTests, testing::ValuesIn(readCases()),
    [](const auto& info) { return info.param.name; });

} // namespace
} // namespace Tessel
