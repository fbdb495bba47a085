#include "Tessel/icalendar/CGICalendarContentLine.h"
#include "Tessel/icalendar/CGICalendarProperty.h"

#include <gtest/gtest.h>
#include <string>

namespace Tessel {
namespace {

const std::string fold = "\r\n ";

std::string run(std::size_t length, char c = 'x')
{
    return std::string(length, c);
}

std::string repeated(std::string_view text, std::size_t count)
{
    std::string result;
    for (std::size_t i = 0; i < count; ++i)
        result += text;
    return result;
}

const auto folded = CGICalendarProperty::foldPropertyLine;

TEST(FoldingTests, FoldsEvery75UnitsAndDropsTheLastPieceOfAMultiple)
{
    EXPECT_EQ(folded(""), "");
    EXPECT_EQ(folded(run(75)), run(75));
    EXPECT_EQ(folded(run(76)), run(75) + fold + run(1));
    EXPECT_EQ(folded(run(151)), run(75) + fold + run(75) + fold + run(1));
    EXPECT_EQ(folded(run(75, 'a') + run(75, 'b')), run(75, 'a') + fold);
    EXPECT_EQ(folded(run(75, 'a') + run(75, 'b') + run(75, 'c')),
        run(75, 'a') + fold + run(75, 'b') + fold);
}

TEST(FoldingTests, CountsUnitsOfUTF16)
{
    EXPECT_EQ(folded(repeated("ü", 75)), repeated("ü", 75));
    EXPECT_EQ(folded(repeated("€", 76)), repeated("€", 75) + fold + "€");
    EXPECT_EQ(folded(repeated("😀", 37) + "x"), repeated("😀", 37) + "x");
    EXPECT_EQ(folded(run(75) + repeated("ü", 75)), run(75) + fold);
}

TEST(FoldingTests, KeepsASurrogatePairWhole)
{
    EXPECT_EQ(folded(run(74) + "😀" + run(3)), run(74) + "😀" + fold + run(3));
    EXPECT_EQ(folded(run(74) + "😀"), run(74) + "😀" + fold);
    EXPECT_EQ(folded(run(74) + "😀" + run(73, 'b') + "😀" + "end"),
        run(74) + "😀" + fold + run(73, 'b') + "😀" + fold + "end");
    // 150 units: the dropped rest begins after the pair.
    EXPECT_EQ(folded(run(74) + "😀" + run(74, 'b')), run(74) + "😀" + fold);
}

TEST(FoldingTests, CountsBytesThatAreNotUTF8ByTheirClass)
{
    EXPECT_EQ(folded(run(1000, '\x80')), run(1000, '\x80'));
    EXPECT_EQ(folded(run(75) + "\x80\x80" + "y"), run(75) + "\x80\x80" + fold + "y");
    EXPECT_EQ(folded(run(40, '\xF0')), run(38, '\xF0') + fold + run(2, '\xF0'));
}

TEST(FoldingTests, FoldsTheWholeLineOnceItIsEscaped)
{
    CGICalendarProperty property;
    property.setName(run(40, 'N'));
    property.setParameterValue(run(20, 'v'), "P");
    property.setValue(run(20, 'w'));
    EXPECT_EQ(property.description(),
        run(40, 'N') + ";P=" + run(20, 'v') + ":" + run(11, 'w') + fold + run(9, 'w') + "\n");
    EXPECT_EQ(CGICalendarContentLine("X:" + run(72) + ",y").description(),
        "X:" + run(72) + "\\" + fold + ",y\n");
}

} // namespace
} // namespace Tessel
