#include "Tessel/Platform/Foundation/Base/FatalError.h"
#include "Tessel/Platform/Plinth/Logger.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cstdio>
#include <string>
#include <thread>
#include <vector>

using namespace Plinth;
using Tessel::CallSite;

namespace {

/// Keeps the last line, down to warnings.
struct Collector final : Logger {
    bool isEnabled(Level level) const override { return level <= Level::warning; }
    void write(Level, std::string_view line, const CallSite& callSite) override
    {
        ++count;
        text = line;
        site = callSite;
    }
    int count = 0;
    std::string text;
    CallSite site = CallSite::current();
};

struct Described {
    std::string description() const { return "described"; }
};

/// What it writes to standard error for one line of each level; the text of a server is no format.
std::string writtenAtEveryLevel(Logger& logger)
{
    testing::internal::CaptureStderr();
    for (const auto level : {Level::error, Level::warning, Level::info, Level::debug})
        logger.log(level, "{} {:99999999d} %n %s {");
    return testing::internal::GetCapturedStderr();
}

} // namespace

TEST(Logger, MakesOneLineOfItsItemsWithTheCallSite)
{
    Collector logger;
    logger.log(Level::warning, "a", std::string("b\0c", 3), -12, std::size_t(34), Described {},
        std::optional<std::string>(), std::optional<std::string>("there"),
        [] { return std::optional<int>(5); });
    const int line = __LINE__ - 3;
    EXPECT_EQ(logger.text, std::string("ab\0c-1234describednilthere5", 27));
    EXPECT_STREQ(logger.site.file, __FILE__);
    EXPECT_STREQ(logger.site.function, "TestBody");
    EXPECT_EQ(logger.site.line, line);

    const auto mustNotBeAsked = [] {
        ADD_FAILURE() << "an item of a line that nobody reads was made";
        return "";
    };
    logger.log(Level::info, mustNotBeAsked);
    makeDefaultLogger()->log(Level::warning, mustNotBeAsked);
    EXPECT_EQ(logger.count, 1);
}

TEST(Logger, DefaultIsSilentBelowErrorsUntilItsLevelIsRaised)
{
    setLogger(nullptr);
    const auto usual = writtenAtEveryLevel(*logger());
    EXPECT_NE(usual.find("error [LoggerTests.cpp:"), std::string::npos) << usual;
    EXPECT_NE(usual.find("] {} {:99999999d} %n %s {\n"), std::string::npos) << usual;
    const auto linesAt = [](Level level) {
        const auto written = writtenAtEveryLevel(*makeDefaultLogger(level));
        return std::count(written.begin(), written.end(), '\n');
    };
    EXPECT_EQ(std::count(usual.begin(), usual.end(), '\n'), 1) << usual;
    EXPECT_EQ(linesAt(Level::info), 3);
    EXPECT_EQ(linesAt(Level::debug), 4);
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

TEST(LoggerDeathTest, HearsWhyTheProcessStops)
{
    GTEST_FLAG_SET(death_test_style, "threadsafe");
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
