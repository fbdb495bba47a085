#include "Tessel/icalendar/CGICalendarContentLine.h"
#include "Tessel/icalendar/CGICalendarProperty.h"

#include <gtest/gtest.h>
#include <stdexcept>

namespace Tessel {
namespace {

using Keys = std::vector<std::optional<std::string>>;

TEST(PropertyTests, FindsOrCreatesParametersByName)
{
    CGICalendarProperty property;
    property.setName("X");
    property.setParameterValue("1", "A");
    property.setParameterInteger(2, "B");
    property.setParameterFloat(0.5f, "C");
    property.setParameterDate(Date::fromSecondsSince1970(1704186000), "D");
    property.setParameterValue(std::nullopt, "A");
    EXPECT_EQ(property.description(), "X;A=;B=2;C=0.5;D=20240102T090000Z:\n");

    EXPECT_EQ(property.parameterValueForName("A"), std::nullopt);
    EXPECT_EQ(property.parameterIntegerForName("B"), 2);
    EXPECT_EQ(property.parameterFloatForName("C"), 0.5f);
    EXPECT_EQ(property.parameterDateForName("D"), Date::fromSecondsSince1970(1704186000));
    EXPECT_EQ(property.parameterForName("a"), nullptr);
    EXPECT_EQ(property.parameterIntegerForName("a"), 0);
    EXPECT_THROW(property.parameterAtIndex(4), std::out_of_range);
}

TEST(PropertyTests, AskingForAParameterRemovesTheFirstOfThatName)
{
    CGICalendarProperty property;
    for (const auto* text : {"A=1", "B=2", "A=3", "nameless"}) {
        property.addParameter(std::make_shared<CGICalendarParameter>(text));
    }
    EXPECT_EQ(property.allParameterKeys(), (Keys {"A", "B", "A", std::nullopt}));
    EXPECT_TRUE(property.hasParameterForName("A"));
    EXPECT_EQ(property.parameterValueForName("A"), "3");
    property.removeParameterForName("A");
    EXPECT_FALSE(property.hasParameterForName("A"));
    EXPECT_FALSE(property.hasParameterForName(""));
    EXPECT_EQ(property.allParameterKeys(), (Keys {"B", std::nullopt}));
}

TEST(PropertyTests, MapsParticipationStatuses)
{
    CGICalendarProperty property;
    EXPECT_EQ(property.participationStatus(), 0);
    property.setValue("TENTATIVE");
    EXPECT_EQ(property.participationStatus(), 4);
    property.setParticipationStatus(8);
    property.setParticipationStatus(-1);
    EXPECT_EQ(property.value(), "TENTATIVE");
    property.setParticipationStatus(7);
    EXPECT_EQ(property.value(), "IN-PROCESS");
    property.setParticipationStatus(0);
    EXPECT_EQ(property.value(), "");
    property.setValue("tentative");
    EXPECT_EQ(property.participationStatus(), 0);
}

TEST(ContentLineTests, SplitsALine)
{
    const auto line = CGICalendarContentLine::contentLineWithString("\rBEGIN;A=1;A=2;B:x:y\n");
    EXPECT_TRUE(line->isBegin());
    EXPECT_FALSE(line->isEnd());
    EXPECT_EQ(line->value(), "x:y");
    EXPECT_EQ(line->allParameterKeys(), (Keys {"A", "A", std::nullopt}));

    line->setString("no colon");
    EXPECT_EQ(line->name(), "BEGIN");
    EXPECT_EQ(line->parameters.size(), 3u);
    line->setString("END:");
    EXPECT_TRUE(line->isEnd());
    EXPECT_TRUE(line->parameters.empty());
    line->setString("a value: N;P=1:V of some length");
    line->setString(*line->value());
    EXPECT_EQ(line->name(), " N");
    EXPECT_EQ(line->value(), "V of some length");

    EXPECT_TRUE(CGICalendarContentLine::IsFoldingLineString("\tx"));
    EXPECT_FALSE(CGICalendarContentLine::IsFoldingLineString("x "));
    EXPECT_FALSE(CGICalendarContentLine::IsFoldingLineString(""));
}

TEST(ContentLineTests, EscapesItsWholeText)
{
    const auto line = std::make_shared<CGICalendarContentLine>("X;A=1;B=2:a,b;c");
    EXPECT_EQ(line->description(), "X\\;A=1\\;B=2:a\\,b\\;c\n");
    line->setValue("one\ntwo\\n");
    EXPECT_EQ(line->description(), "X\\;A=1\\;B=2:one\\ntwo\\n\n");
    EXPECT_EQ(CGICalendarContentLine().description(), ":\n");
}

} // namespace
} // namespace Tessel
