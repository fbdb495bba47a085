#include "Tessel/icalendar/CGICalendarParameter.h"
#include "Tessel/icalendar/CGICalendarValue.h"

#include <cmath>
#include <cstdint>
#include <gtest/gtest.h>
#include <limits>
#include <string>
#include <utility>

namespace Tessel {
namespace {

struct Described {
    std::string description() const { return "described"; }
};

TEST(ValueTests, TellsAbsentFromEmptyAndComparesExactly)
{
    CGICalendarValue value;
    EXPECT_EQ(value.value(), std::nullopt);
    EXPECT_FALSE(value.isName(""));
    EXPECT_FALSE(value.isValue("x"));
    value.setName("UID");
    value.setValue("");
    EXPECT_EQ(value.value(), "");
    EXPECT_FALSE(value.hasValue());
    EXPECT_FALSE(value.isValue(""));
    EXPECT_TRUE(value.isName("UID"));
    EXPECT_FALSE(value.isName("uid"));
    EXPECT_FALSE(value.isName("UID2"));
}

TEST(ValueTests, TakesAPartOfItsOwnText)
{
    CGICalendarValue value;
    value.setValue("a long enough text to be allocated");
    value.setValue(value.value()->substr(2, 4));
    EXPECT_EQ(value.value(), "long");

    CGICalendarParameter parameter;
    parameter.setName("NAME=value that is long enough");
    parameter.setString(*parameter.name());
    EXPECT_EQ(parameter.string(), "NAME=value that is long enough");
}

TEST(ValueTests, WritesObjectsAsText)
{
    CGICalendarValue value;
    const auto written = [&](const auto& object) {
        value.setObject(object);
        return std::string(*value.value());
    };
    EXPECT_EQ(written("text"), "text");
    EXPECT_EQ(written(std::string("text")), "text");
    EXPECT_EQ(written(-12), "-12");
    EXPECT_EQ(written(std::numeric_limits<std::int64_t>::min()), "-9223372036854775808");
    EXPECT_EQ(written(0.1f), "0.1");
    EXPECT_EQ(written(100000.f), "100000");
    EXPECT_EQ(written(0.0001), "0.0001");
    EXPECT_EQ(written(0.1), "0.1");
    EXPECT_EQ(written(Described()), "described");
}

TEST(ValueTests, ReadsTheLeadingInteger)
{
    using Limits = std::numeric_limits<std::int64_t>;
    const std::pair<const char*, std::int64_t> cases[]
        = {{"", 0}, {"12", 12}, {" \t-7x", -7}, {"+3", 3}, {"+-3", 0}, {"x1", 0}, {"1.9", 1},
            {"99999999999999999999", Limits::max()}, {"-99999999999999999999", Limits::min()}};
    CGICalendarValue value;
    EXPECT_EQ(value.integerValue(), 0);
    for (const auto& [text, number] : cases) {
        value.setValue(text);
        EXPECT_EQ(value.integerValue(), number) << text;
    }
}

TEST(ValueTests, ReadsTheLeadingDecimal)
{
    constexpr auto infinite = std::numeric_limits<float>::infinity();
    const std::pair<std::string, float> cases[] = {{"", 0.f}, {"-", 0.f}, {"1.5", 1.5f},
        {" +2.5e1;", 25.f}, {"-.5", -.5f}, {"37.386013;-122.08", 37.386013f}, {"inf", 0.f},
        {"-nan", 0.f}, {"--5", 0.f}, {"--inf", 0.f}, {"1e99", infinite}, {"-1e99", -infinite},
        {"1e-99", 0.f}, {"0.0e5", 0.f}, {"01e50", infinite}, {".1e60", infinite},
        {std::string(61, '1') + "e-1", infinite}, {"0e99", 0.f},
        {"." + std::string(60, '0') + "1e9", 0.f}, {"1e99999999999999999999", infinite},
        {"1e-99999999999999999999", 0.f}, {"1e-44", 1e-44f}, {"-.", 0.f}};
    CGICalendarValue value;
    for (const auto& [text, number] : cases) {
        value.setValue(text);
        EXPECT_EQ(value.floatValue(), number) << text;
    }
}

TEST(ValueTests, ParametersKeepWhatTheyHaveWithoutAnEqualsSign)
{
    CGICalendarParameter parameter("A=1=2");
    EXPECT_EQ(parameter.name(), "A");
    EXPECT_EQ(parameter.value(), "1");
    parameter.setString("B");
    EXPECT_EQ(parameter.string(), "A=1");
    EXPECT_EQ(CGICalendarParameter("B").description(), "=");
    EXPECT_EQ(CGICalendarParameter("B").name(), std::nullopt);
}

} // namespace
} // namespace Tessel
