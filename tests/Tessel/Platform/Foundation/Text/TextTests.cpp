#include "Tessel/Platform/Foundation/Text/Base64.h"
#include "Tessel/Platform/Foundation/Text/UTF8.h"
#include "Tessel/Platform/Foundation/Text/UUID.h"

#include <gtest/gtest.h>

#include <regex>
#include <set>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

using namespace Tessel;
using namespace std::string_view_literals;

TEST(Base64, IsThatOfTheStandard)
{
    // RFC 4648, 10, and the two last letters of the alphabet.
    EXPECT_EQ(base64Encoded(""), "");
    EXPECT_EQ(base64Encoded("foob"), "Zm9vYg==");
    EXPECT_EQ(base64Encoded("fooba"), "Zm9vYmE=");
    EXPECT_EQ(base64Encoded("foobar"), "Zm9vYmFy");
    EXPECT_EQ(base64Encoded("\xFB\xEF\xFF\0"sv), "++//AA==");
    EXPECT_EQ(base64Encoded(std::string(300, 'x')).find('\n'), std::string::npos);
}

namespace {

// Every boundary of RFC 3629's table (4).
constexpr std::string_view wellFormed[] = {"\0"sv, "\x7F", "\xC2\x80", "\xDF\xBF", "\xE0\xA0\x80",
    "\xED\x9F\xBF", "\xEE\x80\x80", "\xEF\xBF\xBF", "\xF0\x90\x80\x80", "\xF4\x8F\xBF\xBF"};
constexpr std::string_view malformed[]
    = {"\x80", "\xBF", "\xC0\x80", "\xC1\xBF", "\xC2", "\xC2\x7F", "\xC2\xC0", "\xE0\x9F\xBF",
        "\xE0\xA0", "\xE1\x80\x7F", "\xE1\x80\xC0", "\xED\xA0\x80", "\xED\xBF\xBF", "\xEF\xBF",
        "\xF0\x8F\xBF\xBF", "\xF0\x90\x80", "\xF1\x80\x80\x7F", "\xF4\x90\x80\x80",
        "\xF5\x80\x80\x80", "\xF8\x88\x80\x80\x80", "\xFE", "\xFF"};

} // namespace

TEST(UTF8, IsJudgedAtEveryOffset)
{
    for (std::size_t before = 0; before < 20; ++before) {
        for (const std::size_t after : {0, 1, 7, 8, 9}) {
            const auto framed = [&](std::string_view bytes) {
                return std::string(before, 'a').append(bytes).append(after, 'b');
            };
            for (const auto bytes : wellFormed) {
                EXPECT_TRUE(isValidUTF8(framed(bytes))) << testing::PrintToString(framed(bytes));
                EXPECT_EQ(codePointCount(framed(bytes)), before + 1 + after);
            }
            for (const auto bytes : malformed)
                EXPECT_FALSE(isValidUTF8(framed(bytes))) << testing::PrintToString(framed(bytes));
        }
    }
    EXPECT_TRUE(isValidUTF8(""));
}

TEST(UUID, IsRandomVersionFourAndNeverTwiceTheSame)
{
    const std::regex form("[0-9A-F]{8}-[0-9A-F]{4}-4[0-9A-F]{3}-[89AB][0-9A-F]{3}-[0-9A-F]{12}");
    std::vector<std::vector<std::string>> made(4);
    std::vector<std::thread> makers;
    for (auto& mine : made) {
        makers.emplace_back([&mine] {
            for (int i = 0; i < 1000; ++i)
                mine.push_back(makeUUID());
        });
    }
    for (auto& maker : makers)
        maker.join();
    std::set<std::string> all;
    for (const auto& mine : made)
        all.insert(mine.begin(), mine.end());
    EXPECT_EQ(all.size(), 4000u);
    for (const auto& uuid : all)
        EXPECT_TRUE(std::regex_match(uuid, form)) << uuid;
}
