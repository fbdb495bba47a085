#include "Tessel/CaldavLibrary/Extensions/AlarmText.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

using namespace Tessel;

namespace {

std::string triggerOf(const MRVAlarm& alarm)
{
    const auto valarm = AlarmText::VALARM(alarm, TimeZone::withIdentifier("Europe/Berlin"));
    return valarm->propertyForName("TRIGGER")->description();
}

std::string triggerAt(double offset)
{
    return triggerOf({.desc = "", .relativeTriggerTime = offset});
}

} // namespace

TEST(AlarmText, SumsTheUnitsOfADuration)
{
    using AlarmText::duration;
    EXPECT_EQ(duration("P2W"), 1209600);
    EXPECT_EQ(duration("-P1DT1H1M1S"), -90061);
    EXPECT_EQ(duration("+PT90S"), 90);
    EXPECT_EQ(duration("PT1.5M"), 1); // "." is a unit of its own and counts as seconds
    EXPECT_EQ(duration("-P9e307W9e307W"), -std::nextafter(0x1p63, 0));
    EXPECT_EQ(duration("P"), 0);
    EXPECT_EQ(duration(""), 0);
}

TEST(AlarmText, WritesATrigger)
{
    const auto at = Date::fromSecondsSince1970(1'704'182'400); // 2024-01-02T08:00Z
    EXPECT_EQ(triggerOf({.desc = "", .absoluteTriggerTime = at, .relativeTriggerTime = -900}),
        "TRIGGER:20240102T090000\n");
    EXPECT_EQ(triggerOf({.desc = ""}), "TRIGGER:\n");
    EXPECT_EQ(triggerAt(-90061.9), "TRIGGER:-P-1DT-1H-1M-1S\n");
    EXPECT_EQ(triggerAt(0.5), "TRIGGER:+P0W\n");
    EXPECT_EQ(triggerAt(-0x1p63), "TRIGGER:-P-106751991167300DT-15H-30M-8S\n");
}

TEST(AlarmTextDeathTest, StopsTheProcessForWhatIsNoNumberOfSeconds)
{
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_DEATH(AlarmText::duration("PT15"), "without a unit");
    EXPECT_DEATH(AlarmText::duration("PxM"), "holds no number");
    EXPECT_DEATH(AlarmText::duration("PnanM"), "holds no number");
    for (const double offset : {std::numeric_limits<double>::quiet_NaN(),
             -std::numeric_limits<double>::infinity(), 0x1p63})
        EXPECT_DEATH(triggerAt(offset), "offset of an alarm");
}
