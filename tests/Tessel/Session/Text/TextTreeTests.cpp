#include "Tessel/Session/Text/ContentLine.h"
#include "Tessel/Session/Text/EventDuration.h"
#include "Tessel/Session/Text/EventMoment.h"
#include "Tessel/Session/Text/TextPatch.h"

#include <gtest/gtest.h>

namespace Tessel {
namespace {

std::string repeated(const std::string& text, int times)
{
    std::string result;
    for (int i = 0; i < times; ++i)
        result += text;
    return result;
}

TEST(TextTree, RefusesWhatIsNoCalendar)
{
    const std::pair<std::string, std::string> cases[] {
        {"", "no BEGIN"},
        {"\n\n", "no BEGIN"},
        {std::string(3, '\0'), "no BEGIN"},
        {"BEGIN:A\nX:1", "line 1, \"BEGIN:A\", is never ended"},
        {"BEGIN:A\nBEGIN:B\nEND:A\nEND:B\n", "line 3, \"END:A\", does not end"},
        {"X:1\nEND:A\n", "line 2, \"END:A\", has no BEGIN"},
        {repeated("BEGIN:A\n", 200) + repeated("END:A\n", 200), "line 101"},
        {repeated("\n", 1'000'001), "too many lines"},
        {"BEGIN:A\rEND:A\r", "is never ended"},
    };
    for (const auto& [text, reason] : cases) {
        const auto read = TextTree::read(text);
        ASSERT_FALSE(read) << text;
        EXPECT_EQ(read.failure().kind, FailureKind::malformed);
        EXPECT_NE(read.reason().find(reason), std::string::npos) << read.reason();
    }
}

TEST(TextTree, ReadsPartsOfLines)
{
    const auto tree = TextTree::read("begin: A \n"
                                     "SUM\r\n MARY;CN=\"a:b;c,d\",e^n^'^^^x;x\n =1:v\n\tw:\n"
                                     "no colon\nOPEN;X=\"y:z\nEnd:a")
                          .value();
    std::string seen;
    for (const auto line : (*tree.components().begin()).lines()) {
        seen += "[" + line.name() + "][" + line.value() + "]";
        for (const auto& parameter : line.parameters()) {
            seen += parameter.name + "=";
            for (const auto& value : parameter.values)
                seen += "<" + value + ">";
        }
        seen += "\n";
    }
    EXPECT_EQ(seen,
        "[SUMMARY][vw:]CN=<a:b;c,d><e\n\"^^x>x=<1>\n"
        "[][]\n[OPEN][z]X=<y>\n");
}

TEST(TextPatch, ChangesLinesInOneGo)
{
    const auto tree = TextTree::read("BEGIN:A\nX:1\nBEGIN:B\nY:1\nEND:B\nZ:1\nEND:A").value();
    const auto a = *tree.components().begin();
    const auto b = *a.components().begin();
    TextPatch patch(tree);
    patch.replace(*a.line("x"), "X:2\n");
    patch.replace(*a.line("x"), "X:3\n");
    patch.insertBefore(b.begin(), "N:1\n");
    patch.replace(*b.line("Y"), "Y:2\n");
    EXPECT_EQ(patch.apply(b), "BEGIN:B\nY:2\nEND:B\n");
    patch.remove(b);
    patch.insertAfter(b.end(), "N:2\n");
    patch.insertAfter(a.end(), "last\n");
    EXPECT_EQ(patch.apply(), "BEGIN:A\nX:3\nN:1\nN:2\nZ:1\nEND:A\nlast\n");
}

TEST(ContentLine, IsWrittenAsTheRFCSays)
{
    EXPECT_EQ(escapedText("a\\b;c,d\re\r\nf\ng\x01\x7F\th\""), "a\\\\b\\;c\\,d\\ne\\nf\\ng\th\"");
    EXPECT_EQ(plainText("a\\\\b\\;c\\,d\\Ne\\x\\"), "a\\b;c,d\nex\\");
    EXPECT_EQ(
        contentLine("A", {{"CN", {"x", "y,\"^\n\x02z"}}}, "v\nw"), "A;CN=x,\"y,^'^^^nz\":vw\r\n");
    for (int shift = 0; shift < 5; ++shift) {
        const auto value = std::string(static_cast<std::size_t>(shift), 'x') + repeated("ä🍝", 60);
        auto line = contentLine("SUMMARY", {}, value);
        std::string unfolded;
        while (!line.empty()) {
            const auto end = line.find("\r\n");
            EXPECT_LE(end, 75u);
            EXPECT_NE(static_cast<unsigned char>(line[1]) & 0xC0, 0x80);
            unfolded += line.substr(unfolded.empty() ? 0 : 1, end - (unfolded.empty() ? 0 : 1));
            line.erase(0, end + 2);
        }
        EXPECT_EQ(unfolded, "SUMMARY:" + value);
    }
}

TEST(EventMoment, IsReadAndWritten)
{
    for (const auto* value : {"20240229", "00010101", "99991231T235959", "20240131T093000Z"})
        EXPECT_EQ(EventMoment::read(value).value().value(), value);
    for (const auto* value : {"", "2024", "20230229", "20240101T240000", "20240101T2359",
             "20240101 093000", "20240101T093000+", "2024010a", "20241301"})
        EXPECT_FALSE(EventMoment::read(value)) << value;
    EXPECT_EQ(EventMoment::read("19970630T235960Z").value().value(), "19970630T235959Z");
}

TEST(EventDuration, IsReadAndWritten)
{
    for (const auto* value :
        {"PT15M", "-PT1H30M", "P1DT2H", "P2W", "P15D", "PT0S", "-P1D", "PT1H1S"})
        EXPECT_EQ(EventDuration::read(value).value().value(), value);
    for (const auto* value :
        {"", "P", "PT", "15M", "P1H", "PT1D", "P1", "PT5", "P99999999999999999999W", "PT1M1M:"})
        EXPECT_FALSE(EventDuration::read(value)) << value;
    EXPECT_EQ(EventDuration::read("+P0D").value().value(), "PT0S");
}

} // namespace
} // namespace Tessel
