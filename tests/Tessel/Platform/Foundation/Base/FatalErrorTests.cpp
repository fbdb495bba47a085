#include "Tessel/Platform/Foundation/Base/FatalError.h"
#include "Tessel/Platform/Foundation/Web/URLRequest.h"

#include <gtest/gtest.h>

#include <csignal>

using namespace Tessel;

TEST(FatalErrorDeathTest, NamesItsCallerOnStandardErrorAndAborts)
{
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(fatalError("it is broken"), testing::KilledBySignal(SIGABRT),
        "Tessel: fatal error: it is broken \\(.*FatalErrorTests\\.cpp:[0-9]+, TestBody\\)");
    // What only helps its caller names the caller.
    EXPECT_DEATH(URLRequest("http://h:port/"),
        "not a valid URL: http://h:port/ \\(.*FatalErrorTests\\.cpp:");
}
