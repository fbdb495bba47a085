#include "Tessel/icalendar/CGICalendar.h"

#include <gtest/gtest.h>
#include <string>
#include <thread>

namespace Tessel {
namespace {

// Each of these would run for hours or end the process if a step were quadratic or recursive in the
// size of its input; the tests' time limit is what they measure.

std::string repeated(std::string_view text, std::size_t count)
{
    std::string result;
    result.reserve(text.size() * count);
    for (std::size_t i = 0; i < count; ++i)
        result += text;
    return result;
}

TEST(AbsurdInputTests, NestingDeeperThanTheStack)
{
    const auto begins = repeated("BEGIN:A\n", 100'000);
    const auto text = begins + repeated("END:A\n", 100'000);
    auto calendar = CGICalendar::initWithString(text);
    EXPECT_EQ(calendar->description(), text);

    // A part that is kept is freed as safely as the whole.
    const auto kept = calendar->objects[0]->components[0]->components[0];
    calendar.reset();
    EXPECT_EQ(kept->description().size(), text.size() - 2 * 14);
}

TEST(AbsurdInputTests, UnclosedComponents)
{
    const auto calendar = CGICalendar::initWithString(repeated("BEGIN:A\n", 100'000));
    EXPECT_EQ(calendar->objects.size(), 1u);
    EXPECT_TRUE(calendar->parserStack.empty());
}

TEST(AbsurdInputTests, EndsWithNothingOpen)
{
    EXPECT_TRUE(CGICalendar::initWithString(repeated("END:A\n", 1'000'000))->objects.empty());
}

TEST(AbsurdInputTests, ALineOf50Megabytes)
{
    const std::size_t size = 50'000'000;
    const auto calendar
        = CGICalendar::initWithString("BEGIN:A\nX:" + std::string(size, 'x') + "\nEND:A\n");
    EXPECT_EQ(calendar->objects[0]->properties[0]->value()->size(), size);
    const auto units = size + 2;
    EXPECT_EQ(calendar->description().size(), 14 + 1 + units + units / 75 * 3);
}

TEST(AbsurdInputTests, AMillionContinuations)
{
    const auto calendar
        = CGICalendar::initWithString("BEGIN:A\nX:" + repeated("\n yz", 1'000'000) + "\nEND:A\n");
    EXPECT_EQ(calendar->objects[0]->properties[0]->value(), repeated("yz", 1'000'000));
    EXPECT_TRUE(CGICalendar::initWithString(repeated(" \n", 1'000'000))->objects.empty());
}

TEST(AbsurdInputTests, AMillionProperties)
{
    const auto text = "BEGIN:A\n" + repeated("X;P=1:v\n", 1'000'000) + "END:A\n";
    const auto calendar = CGICalendar::initWithString(text);
    EXPECT_EQ(calendar->objects[0]->properties.size(), 1'000'000u);
    EXPECT_EQ(calendar->description(), text);
}

TEST(AbsurdInputTests, AHundredThousandParameters)
{
    std::string different = "BEGIN:A\nX";
    for (int i = 0; i < 100'000; ++i)
        different += ";P" + std::to_string(i) + "=" + std::to_string(i);
    different += ";P0=last:v\nEND:A\n";
    const auto calendar = CGICalendar::initWithString(different);
    const auto& parameters = calendar->objects[0]->properties[0]->parameters;
    ASSERT_EQ(parameters.size(), 100'000u);
    EXPECT_EQ(parameters[0]->value(), "last");
    EXPECT_EQ(parameters[99'999]->value(), "99999");

    const auto parameterCount = [](const std::string& parameter) {
        const auto text = "BEGIN:A\nX" + repeated(";" + parameter, 100'000) + ":v\n";
        return CGICalendar::initWithString(text)->objects[0]->properties[0]->parameters.size();
    };
    EXPECT_EQ(parameterCount("P=1"), 1u);
    EXPECT_EQ(parameterCount("=1"), 100'000u);
    EXPECT_EQ(parameterCount(""), 100'000u);
}

TEST(AbsurdInputTests, BlankLinesAndParametersTakeNoMemory)
{
    const std::size_t size = 20'000'000;
    const auto lines
        = CGICalendar::initWithString("BEGIN:A\n" + std::string(size, '\n') + "X:v\nEND:A\n");
    const auto& properties = lines->objects[0]->properties;
    EXPECT_EQ(properties.size(), size + 1);
    EXPECT_EQ(properties.filled().size(), 1u);
    EXPECT_EQ(lines->objects[0]->propertyValueForName("X"), "v");
    EXPECT_EQ(lines->description().size(), 8 + 2 * size + 4 + 6);

    const auto line
        = CGICalendar::initWithString("BEGIN:A\nX" + std::string(size, ';') + "P=1:v\n");
    const auto& parameters = line->objects[0]->properties[0]->parameters;
    EXPECT_EQ(parameters.size(), size);
    EXPECT_EQ(parameters.filled().size(), 1u);
    EXPECT_EQ(line->objects[0]->properties[0]->parameterValueForName("P"), "1");
}

TEST(AbsurdInputTests, ALimitCountsWhatTakesMemory)
{
    const auto nodes = [](const std::string& text) {
        CGICalendar calendar;
        std::size_t least = 0;
        while (!calendar.parseWithLimit(text, least)) {
            EXPECT_TRUE(calendar.objects.empty() && calendar.parserStack.empty());
            ++least;
        }
        return least;
    };
    EXPECT_EQ(nodes("X:1\n\n"), 0u);
    EXPECT_EQ(nodes("BEGIN:A\n\nno colon\nX;;P=1;P=2;Q=:v\nBEGIN:B\n:\nEND:B\n\n"), 6u);

    CGICalendar calendar;
    EXPECT_FALSE(calendar.parseWithLimit("BEGIN:A\nX" + repeated(";=", 1'000'000) + ":v\n", 1'000));
}

TEST(AbsurdInputTests, NodesAreFreedOnOtherThreads)
{
    auto calendar = CGICalendar::initWithString(
        "BEGIN:A\n" + repeated("BEGIN:B\nX;P=1:v\nEND:B\n", 10'000) + "END:A\n");
    auto& components = calendar->objects[0]->components;
    const auto middle = components.begin() + 5'000;
    std::vector<std::shared_ptr<CGICalendarComponent>> half(
        std::move_iterator(components.begin()), std::move_iterator(middle));
    components.erase(components.begin(), middle);
    std::thread other([half = std::move(half)]() mutable { half.clear(); });
    calendar.reset();
    other.join();
}

} // namespace
} // namespace Tessel
