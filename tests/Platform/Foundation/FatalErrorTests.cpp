#include "Platform/Foundation/FatalError.h"
#include "Platform/Foundation/URLRequest.h"

#include <gtest/gtest.h>

#include <csignal>
#include <cstdio>

using namespace Tessel;

namespace {

class FatalErrorDeathTest : public testing::Test {
protected:
    FatalErrorDeathTest() { GTEST_FLAG_SET(death_test_style, "threadsafe"); }
};

} // namespace

TEST_F(FatalErrorDeathTest, NamesItsCallerOnStandardErrorAndAborts)
{
    EXPECT_EXIT(fatalError("it is broken"), testing::KilledBySignal(SIGABRT),
        "Tessel: fatal error: it is broken \\(.*FatalErrorTests\\.cpp:[0-9]+, TestBody\\)");
    // What only helps its caller names the caller.
    EXPECT_DEATH(URLRequest("http://h:port/"),
        "not a valid URL: http://h:port/ \\(.*FatalErrorTests\\.cpp:");
}

TEST_F(FatalErrorDeathTest, IsToldToItsLogFirst)
{
    const auto logsAndStops = [] {
        setFatalErrorLog([](std::string_view message, const CallSite& site) {
            std::fprintf(
                stderr, "log: %.*s in line %d\n", int(message.size()), message.data(), site.line);
        });
        fatalError("it is broken", {"File.cpp", "caller", 17});
    };
    EXPECT_DEATH(logsAndStops(), "log: it is broken in line 17\nTessel: fatal error: it is broken");
    const auto stopsWithoutLog = [] {
        setFatalErrorLog(nullptr);
        fatalError("it is broken");
    };
    EXPECT_DEATH(stopsWithoutLog(), "^Tessel: fatal error: it is broken");
}
