#include "apps/tessel/Output.h"

#include <gtest/gtest.h>

namespace Tessel::App {
namespace {

TEST(OutputTest, WritesJsonThatAnyReaderTakes)
{
    EXPECT_EQ(Output::json({}), "{}");
    EXPECT_EQ(Output::json({{"text", std::string("a\"b\\c\n\x01\x7f")}, {"yes", true},
                  {"number", std::int64_t(-7)}, {"nothing", std::monostate {}},
                  {"list", std::vector<std::string> {"Łódź", "東京", "😀"}}}),
        R"({"text":"a\"b\\c\u000a\u0001\u007f","yes":true,"number":-7,"nothing":null,)"
        R"("list":["Łódź","東京","😀"]})");
}

TEST(OutputTest, ReplacesBytesThatAreNotUTF8)
{
    const auto quoted = [](std::string text) { return Output::json({{"t", std::move(text)}}); };
    EXPECT_EQ(quoted("\xff"), "{\"t\":\"\xef\xbf\xbd\"}");
    EXPECT_EQ(quoted("\xc3"), "{\"t\":\"\xef\xbf\xbd\"}") << "cut short";
    EXPECT_EQ(quoted("\xc0\xaf"), "{\"t\":\"\xef\xbf\xbd\xef\xbf\xbd\"}") << "overlong";
    EXPECT_EQ(quoted("\xe0\x80\xaf").find('\x80'), std::string::npos);
    EXPECT_EQ(quoted("\xed\xa0\x80").find("\xed\xa0"), std::string::npos) << "a surrogate";
    EXPECT_EQ(quoted("\xf4\x90\x80\x80").find("\xf4\x90"), std::string::npos) << "past U+10FFFF";
}

TEST(OutputTest, KeepsAServersTextFromSteeringTheTerminal)
{
    testing::internal::CaptureStdout();
    Output(false).result("a\x1b[2Jb\nc", {});
    Output(false).text("a\x1b[2Jb\nc\n", {});
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "a [2Jb c\na [2Jb\nc\n");

    testing::internal::CaptureStdout();
    Output(false).result("a\xc2\x9b"
                         "2Jb\xc2\x80 \xc2\xa0\xc2"
                         "A",
        {});
    EXPECT_EQ(testing::internal::GetCapturedStdout(),
        "a 2Jb  \xc2\xa0\xc2"
        "A\n");
    EXPECT_EQ(Output::json({{"t",
                  std::string("\xc2\x9b"
                              "2J\xc2\xa0")}}),
        "{\"t\":\"\\u009b2J\xc2\xa0\"}");
}

} // namespace
} // namespace Tessel::App
