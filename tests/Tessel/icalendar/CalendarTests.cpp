#include "Tessel/icalendar/CGICalendar.h"

#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

namespace Tessel {
namespace {

class CalendarFileTests : public testing::Test {
protected:
    void SetUp() override { std::filesystem::create_directory(directory); }
    void TearDown() override { std::filesystem::remove_all(directory); }

    std::filesystem::path write(const std::string& bytes)
    {
        std::ofstream(directory / "in.ics", std::ios::binary) << bytes;
        return directory / "in.ics";
    }

    const std::filesystem::path directory = std::filesystem::temp_directory_path()
        / ("tessel-calendar-" + std::to_string(::getpid()));
};

TEST(CalendarTests, ParsesAnewEachTime)
{
    CGICalendar calendar;
    EXPECT_TRUE(calendar.parseWithString("BEGIN:A\nEND:A\n"));
    EXPECT_TRUE(calendar.parseWithString("BEGIN:B\nEND:B\nBEGIN:C\n"));
    ASSERT_EQ(calendar.objects.size(), 2u);
    EXPECT_TRUE(calendar.objectAtIndex(0)->isType("B"));
    EXPECT_EQ(calendar.peekParserObject(), nullptr);
    EXPECT_THROW(calendar.objectAtIndex(2), std::out_of_range);

    Error error;
    EXPECT_FALSE(calendar.parseWithString(std::nullopt, &error));
    EXPECT_TRUE(calendar.objects.empty());
    EXPECT_EQ(error, Error());
    EXPECT_TRUE(calendar.parseWithString("garbage"));
    EXPECT_EQ(calendar.description(), "");
}

TEST(CalendarTests, ANodeOutlivesItsCalendar)
{
    auto property
        = CGICalendar::initWithString("BEGIN:A\nDESCRIPTION;X=a parameter:some\n  text\nEND:A\n")
              ->objects[0]
              ->properties[0];
    EXPECT_EQ(property->description(), "DESCRIPTION;X=a parameter:some text\n");
    const auto parameter = property->parameters[0];
    property.reset();
    EXPECT_EQ(parameter->string(), "X=a parameter");
}

TEST(CalendarTests, AParsedTreeCanBeChanged)
{
    const auto calendar = CGICalendar::initWithString("BEGIN:A\nBEGIN:B\nX;P=1:v\nEND:B\nEND:A\n");
    const auto child = calendar->objects[0]->componentAtIndex(0);
    child->setType("B2");
    child->setPropertyValue("w", "X", {"2", "3"}, {"P", "Q"});
    child->addProperty(calendar->objects[0]->components[0]->properties[0]);
    calendar->addObject(CGICalendarObject::object());
    calendar->objects.push_back(nullptr);
    EXPECT_EQ(calendar->description(),
        "BEGIN:A\nBEGIN:B2\nX;P=2;Q=3:w\nX;P=2;Q=3:w\nEND:B2\nEND:A\n"
        "BEGIN:VCALENDAR\nEND:VCALENDAR\n");
}

TEST(CalendarTests, MakesErrorsAndIdentifiers)
{
    const auto error = CGICalendar().createErrorAt(5, "X");
    EXPECT_EQ(error.domain, "skavegeirmi");
    EXPECT_EQ(error.code, -1);
    EXPECT_EQ(error.userInfo,
        (std::map<std::string, std::string> {{"LineNumber", "X"}, {"ContentLine", "X"}}));

    const auto uuid = CGICalendar::UUID();
    EXPECT_EQ(uuid.size(), 36u);
    EXPECT_EQ(uuid.find_first_not_of("0123456789ABCDEF-"), uuid.npos);
    EXPECT_NE(uuid, CGICalendar::UUID());
}

TEST_F(CalendarFileTests, ReadsAFile)
{
    EXPECT_EQ(
        CGICalendar::initWithPath(write("BEGIN:Ä\nEND:Ä\n"))->description(), "BEGIN:Ä\nEND:Ä\n");
    EXPECT_EQ(CGICalendar::initWithPath(write(""))->objects.size(), 0u);
    EXPECT_EQ(CGICalendar::initWithPath(directory / "missing")->objects.size(), 0u);
}

TEST_F(CalendarFileTests, RefusesWhatIsNoTextFile)
{
    CGICalendar calendar;
    calendar.addObject(CGICalendarObject::object());
    EXPECT_FALSE(calendar.parseWithPath(directory / "missing"));
    EXPECT_FALSE(calendar.parseWithPath(directory));
    EXPECT_EQ(calendar.objects.size(), 1u);
    EXPECT_FALSE(calendar.parseWithPath(write("BEGIN:A\nX:\xFF\nEND:A\n")));
    EXPECT_TRUE(calendar.objects.empty());
}

TEST_F(CalendarFileTests, RefusesAtOnceWhatHasNoEndOrNoRoom)
{
    const auto huge = write("BEGIN:A\n");
    std::filesystem::resize_file(huge, std::uintmax_t(1) << 40);
    const auto pipe = directory / "pipe";
    ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
    for (const auto& path : {huge, pipe, std::filesystem::path("/dev/zero")})
        EXPECT_FALSE(CGICalendar().parseWithPath(path)) << path;
}

TEST_F(CalendarFileTests, WritesUnderTheLongestName)
{
    const auto path = directory / std::string(255, 'n');
    EXPECT_TRUE(CGICalendar::initWithString("BEGIN:A\nEND:A\n")->writeToFile(path));
    EXPECT_EQ(CGICalendar::initWithPath(path)->description(), "BEGIN:A\nEND:A\n");
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(directory), {}), 1);
    EXPECT_FALSE(CGICalendar().writeToFile(directory / std::string(256, 'n')));
}

TEST_F(CalendarFileTests, WritesAFile)
{
    const auto path = directory / "out.ics";
    const auto calendar = CGICalendar::initWithString("BEGIN:A\nX:\xC3\xA4\nEND:A\n");
    EXPECT_TRUE(calendar->writeToFile(path));
    ::chmod(path.c_str(), 0640);
    EXPECT_TRUE(calendar->writeToFile(path));
    struct stat status;
    ASSERT_EQ(::stat(path.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777, 0640u);
    EXPECT_EQ(CGICalendar::initWithPath(path)->description(), calendar->description());
}

TEST_F(CalendarFileTests, LeavesAFileAloneWhenWritingFails)
{
    const auto path = write("BEGIN:A\nEND:A\n");
    EXPECT_FALSE(CGICalendar::initWithString("BEGIN:A\nX:\xFF\nEND:A\n")->writeToFile(path));
    EXPECT_FALSE(CGICalendar().writeToFile(directory / "no" / "such"));
    EXPECT_FALSE(CGICalendar().writeToFile(directory));
    EXPECT_EQ(CGICalendar::initWithPath(path)->description(), "BEGIN:A\nEND:A\n");
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(directory), {}), 1);
}

} // namespace
} // namespace Tessel
