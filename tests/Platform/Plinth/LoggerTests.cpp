#include "Platform/Foundation/FatalError.h"
#include "Platform/Plinth/Logger.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cstdio>
#include <string>
#include <thread>
#include <vector>

using namespace Plinth;
using Tessel::CallSite;

namespace {

struct Line {
    Level level;
    std::string text;
    CallSite site;
};

/// Keeps the lines up to a level.
struct Collector final : Logger {
    explicit Collector(Level least = Level::debug)
        : least(least)
    {
    }
    bool isEnabled(Level level) const override { return level <= least; }
    void write(Level level, std::string_view line, const CallSite& site) override
    {
        lines.push_back({level, std::string(line), site});
    }
    const Level least;
    std::vector<Line> lines;
};

struct Described {
    std::string description() const { return "described"; }
};

std::string writtenToStandardError(const std::function<void()>& work)
{
    testing::internal::CaptureStderr();
    work();
    return testing::internal::GetCapturedStderr();
}

void logAtEveryLevel(Logger& logger)
{
    logger.log(Level::error, "an error");
    logger.log(Level::warning, "a warning");
    logger.log(Level::info, "an info");
    logger.log(Level::debug, "a trace");
}

} // namespace

TEST(Logger, MakesOneLineOfItsItemsWithTheCallSite)
{
    Collector logger;
    logger.log(Level::info, "a", std::string("b\0c", 3), -12, std::size_t(34), Described {},
        std::optional<std::string>(), std::optional<std::string>("there"),
        [] { return std::optional<int>(5); });
    const int line = __LINE__ - 3;
    ASSERT_EQ(logger.lines.size(), 1u);
    EXPECT_EQ(logger.lines[0].text, std::string("ab\0c-1234describednilthere5", 27));
    EXPECT_EQ(logger.lines[0].level, Level::info);
    EXPECT_STREQ(logger.lines[0].site.file, __FILE__);
    EXPECT_STREQ(logger.lines[0].site.function, "TestBody");
    EXPECT_EQ(logger.lines[0].site.line, line);
}

TEST(Logger, BuildsNoLineThatNobodyReads)
{
    Collector logger(Level::warning);
    const auto mustNotBeAsked = [] {
        ADD_FAILURE() << "the item was made";
        return "";
    };
    logger.log(Level::info, mustNotBeAsked);
    makeDefaultLogger()->log(Level::warning, mustNotBeAsked);
    logger.log(Level::warning, [] { return "asked"; });
    ASSERT_EQ(logger.lines.size(), 1u);
    EXPECT_EQ(logger.lines[0].text, "asked");
}

TEST(Logger, DefaultIsSilentBelowErrorsUntilItsLevelIsRaised)
{
    setLogger(nullptr);
    const auto usual = writtenToStandardError([] { logAtEveryLevel(*logger()); });
    EXPECT_NE(usual.find("error [LoggerTests.cpp:"), std::string::npos) << usual;
    EXPECT_NE(usual.find("] an error\n"), std::string::npos) << usual;
    EXPECT_EQ(std::count(usual.begin(), usual.end(), '\n'), 1) << usual;

    const auto all
        = writtenToStandardError([] { logAtEveryLevel(*makeDefaultLogger(Level::debug)); });
    EXPECT_EQ(std::count(all.begin(), all.end(), '\n'), 4) << all;
    const auto some
        = writtenToStandardError([] { logAtEveryLevel(*makeDefaultLogger(Level::info)); });
    EXPECT_EQ(std::count(some.begin(), some.end(), '\n'), 3) << some;
}

TEST(Logger, TextOfAServerIsNoFormat)
{
    const auto written = writtenToStandardError(
        [] { makeDefaultLogger()->log(Level::error, "{} {:99999999d} %n %s {"); });
    EXPECT_NE(written.find("] {} {:99999999d} %n %s {\n"), std::string::npos) << written;
}

TEST(Logger, MayBeReplacedWhileOthersLog)
{
    struct Counter final : Logger {
        std::atomic<int>& count;
        explicit Counter(std::atomic<int>& count)
            : count(count)
        {
        }
        bool isEnabled(Level) const override { return true; }
        void write(Level, std::string_view, const CallSite&) override { ++count; }
    };
    std::atomic<int> count {0};
    setLogger(std::make_shared<Counter>(count));
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([&count, i] {
            for (int n = 0; n < 500; ++n) {
                logger()->log(Level::error, "line ", n);
                if (i == 0) setLogger(std::make_shared<Counter>(count));
            }
        });
    }
    for (auto& thread : threads)
        thread.join();
    setLogger(nullptr);
    EXPECT_EQ(count, 2000);
}

class LoggerDeathTest : public testing::Test {
protected:
    LoggerDeathTest() { GTEST_FLAG_SET(death_test_style, "threadsafe"); }
};

TEST_F(LoggerDeathTest, HearsWhyTheProcessStops)
{
    struct Marking final : Logger {
        bool isEnabled(Level) const override { return true; }
        void write(Level level, std::string_view line, const CallSite& site) override
        {
            std::fprintf(stderr, "%d: %.*s, line %d\n", int(level), int(line.size()), line.data(),
                site.line);
        }
    };
    const auto stops = [] {
        setLogger(std::make_shared<Marking>());
        Tessel::fatalError("it is broken", {"File.cpp", "caller", 17});
    };
    EXPECT_DEATH(stops(), "0: it is broken, line 17\n.*fatal error: it is broken");
}
