#include "Tessel/CaldavLibrary/Parsers/MRVAccountDetailsParser.h"
#include "Tessel/CaldavLibrary/Parsers/MRVCalendarParser.h"
#include "Tessel/CaldavLibrary/Parsers/MRVEventDescriptorsParser.h"
#include "Tessel/CaldavLibrary/Parsers/MRVEventsParser.h"
#include "Tessel/CaldavLibrary/Parsers/MRVNotificationInfoParser.h"
#include "Tessel/CaldavLibrary/Parsers/MRVNotificationParser.h"
#include "Tessel/CaldavLibrary/Parsers/MRVTimeZoneParser.h"
#include "tests/Tessel/CaldavLibrary/Parsers/ModelDump.h"
#include "tests/support/CaseFile.h"
#include "tests/support/LogRecorder.h"
#include "tests/support/TestHost.h"

#include <gtest/gtest.h>

#include <fstream>
#include <functional>
#include <sstream>

using namespace Tessel;
using namespace Tessel::Test;

namespace {

constexpr auto namespaces
    = R"( xmlns:D="DAV:" xmlns:C="urn:ietf:params:xml:ns:caldav" xmlns:X="urn:x")"
      R"( xmlns:CS="http://calendarserver.org/ns/" xmlns:I="http://apple.com/ns/ical/">)";

std::vector<std::string> linesOf(std::istream& stream)
{
    std::vector<std::string> lines;
    for (std::string line; std::getline(stream, line);)
        lines.push_back(line);
    return lines;
}

Data multistatus(const std::string& responses)
{
    return std::string("<D:multistatus") + namespaces + responses + "</D:multistatus>";
}

std::string response(const std::string& prop, const std::string& href = "/cal/e%201.ics")
{
    return "<D:response><D:href>" + href + "</D:href><D:propstat><D:prop>" + prop
        + "</D:prop><D:status>HTTP/1.1 200 OK</D:status></D:propstat></D:response>";
}

std::string dataOf(const std::string& components)
{
    std::string zones;
    for (const std::string name : {"Europe/Berlin", "Europe/Paris", "America/New_York"})
        zones += "BEGIN:VTIMEZONE\nTZID:" + name + "\nEND:VTIMEZONE\n";
    return "<D:getetag>\"1\"</D:getetag><C:schedule-tag>s</C:schedule-tag><C:calendar-data>"
           "<![CDATA[BEGIN:VCALENDAR\n"
        + zones + components + "END:VCALENDAR\n]]></C:calendar-data>";
}

std::string vevent(const std::string& lines)
{
    return "BEGIN:VEVENT\nUID:u1\n" + lines + "END:VEVENT\n";
}

std::optional<MRVEventsParser::Events> eventsIn(const std::string& responses)
{
    MRVEventsParser parser(multistatus(responses), nullptr);
    parser.calendar = calendarAt("/cal/", knownAccount());
    return parser.parseEvents();
}

/// A dump of each, or that there is no list, or an empty one.
template <class List> std::string shown(const std::optional<List>& list)
{
    if (!list) return "none\n";
    if (list->empty()) return "empty\n";
    std::string text;
    for (const auto& item : *list)
        text += dump(*item);
    return text;
}

/// The listing of the calendar in calendar.xml, where a line of `changes` takes the place of the
/// line of the same element, or with a "-" before it removes that.
std::string calendarWith(const std::string& changes)
{
    std::ifstream file(TESSEL_TEST_DATA "/Parsers/calendar.xml");
    auto properties = linesOf(file);
    std::string added;
    std::istringstream stream(changes);
    for (const auto& line : linesOf(stream)) {
        const bool removes = line.starts_with("-");
        const auto element = line.substr(removes, line.find_first_of(" />", 2) - removes);
        std::erase_if(
            properties, [&](const auto& property) { return property.starts_with(element); });
        if (!removes) added += line + "\n";
    }
    for (const auto& property : properties)
        added += property;
    return response(added, "/cal/");
}

std::string calendars(const std::string& responses)
{
    return shown(MRVCalendarParser(multistatus(responses), knownAccount()).parseCalendars());
}

std::string tags(const std::string& responses)
{
    return shown(
        MRVEventDescriptorsParser(multistatus(responses), nullptr).parseEventsDescription());
}

std::string notifications(const std::string& responses)
{
    return shown(MRVNotificationInfoParser(multistatus(responses), nullptr).parseInfo());
}

std::string notification(const std::string& content)
{
    const auto text = std::string("<CS:notification") + namespaces + content + "</CS:notification>";
    const auto note = MRVNotificationParser(text, knownAccount()).parseNote();
    return note ? dump(*note) : "none\n";
}

std::string accountDetails(const std::string& responses)
{
    std::string text;
    const auto details
        = MRVAccountDetailsParser(multistatus(responses), nullptr).parseAccountDetails();
    for (const auto& [key, value] : details.value())
        text += key + " = " + std::get<std::string>(value) + "\n";
    return text;
}

std::string asOnTheWire(const std::string& text)
{
    std::string wire;
    for (const char c : text)
        wire += c == '\n' ? "\r\n" : std::string(1, c);
    return wire;
}

/// Each zone's name in the text, its identifier, and its seconds from GMT in winter and in summer.
std::string zones(const std::string& text)
{
    const auto zones = MRVTimeZoneParser(text).parseTimeZones();
    if (!zones) return "none\n";
    std::ostringstream shown;
    shown << std::showpos;
    for (const auto& [tzid, zone] : *zones) {
        const auto winter = zone.secondsFromGMT(Date::fromSecondsSince1970(1'704'067'200));
        const auto summer = zone.secondsFromGMT(Date::fromSecondsSince1970(1'719'792'000));
        shown << tzid << ": " << zone.identifier() << " " << winter << " " << summer << "\n";
    }
    return shown.str();
}

/// The text that is written for what was read, each definition of a zone reduced to its name.
std::string written(const MRVEvent& event)
{
    auto text = event.iCalendarString().value_or("none\n");
    const std::string last = "END:VTIMEZONE\n";
    for (auto at = text.find("BEGIN:VTIMEZONE"); at != text.npos;
         at = text.find("BEGIN:VTIMEZONE")) {
        const auto name = text.find("TZID:", at) + 5;
        const auto identifier = text.substr(name, text.find_first_of("\r\n", name) - name);
        text.replace(at, text.find(last, at) + last.size() - at, "VTIMEZONE " + identifier + "\n");
    }
    return text;
}

/// What a case's input is read as, by the name of its section.
const std::map<std::string, std::function<std::string(const std::string&)>> readers {
    {"zones", zones},
    {"account-details", accountDetails},
    {"calendars", calendars},
    {"calendar", [](const std::string& changes) { return calendars(calendarWith(changes)); }},
    {"events", [](const std::string& responses) { return shown(eventsIn(responses)); }},
    {"vevent",
        [](const std::string& lines) { return shown(eventsIn(response(dataOf(vevent(lines))))); }},
    {"tags", tags},
    {"notifications", notifications},
    {"notification", notification},
};

void expectLines(const std::string& text, const std::string& lines)
{
    std::istringstream stream(lines);
    for (const auto& line : linesOf(stream)) {
        EXPECT_NE(("\n" + text).find("\n" + line + "\n"), text.npos) << line << " in\n" << text;
    }
}

std::vector<Case> cases(bool thatStop)
{
    auto all = readCases(TESSEL_TEST_DATA "/Parsers/cases");
    std::erase_if(
        all, [&](const Case& each) { return each.sections.contains("stops") != thatStop; });
    return all;
}

class ParserCases : public testing::TestWithParam<Case> {
protected:
    const std::map<std::string, std::string>& sections = GetParam().sections;
    const std::pair<const std::string, std::string>& input = *std::find_if(sections.begin(),
        sections.end(), [](const auto& each) { return readers.contains(each.first); });
    std::string read() const { return readers.at(input.first)(input.second); }
};
using ParserCasesDeathTest = ParserCases;

} // namespace

TEST_P(ParserCases, ReadsAndWrites)
{
    const LogRecorder log;
    const auto dumped = read();
    const auto text = input.first == "vevent"
        ? written(*eventsIn(response(dataOf(vevent(input.second))))->front())
        : "";
    ASSERT_GT(sections.size(), 1u);
    if (input.first == "zones") {
        EXPECT_EQ(zones(asOnTheWire(input.second)), dumped);
    }
    for (const auto& [name, expected] : sections) {
        if (name == "is")
            EXPECT_EQ(dumped, expected);
        else if (name == "has")
            expectLines(dumped, expected);
        else if (name == "logs")
            EXPECT_TRUE(log.holds(expected.substr(0, expected.size() - 1)));
        else if (name == "written")
            EXPECT_EQ(text, expected);
        else if (name == "writes")
            expectLines(text, expected);
        else
            EXPECT_EQ(name, input.first) << "an unknown section";
    }
}

TEST_P(ParserCasesDeathTest, StopsTheProcess)
{
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    const auto& reason = sections.at("stops");
    EXPECT_DEATH(read(), reason.substr(0, reason.size() - 1));
}

INSTANTIATE_TEST_SUITE_P(Cases, ParserCases, testing::ValuesIn(cases(false)),
    [](const auto& info) { return info.param.name; });
INSTANTIATE_TEST_SUITE_P(Cases, ParserCasesDeathTest, testing::ValuesIn(cases(true)),
    [](const auto& info) { return info.param.name; });

TEST(ParserTests, HaveNothingToReadInWhatIsNoXML)
{
    for (const auto& data : {Data(), Data("<html>no")}) {
        EXPECT_FALSE(MRVCalendarParser(data, knownAccount()).parseCalendars());
        EXPECT_FALSE(MRVAccountDetailsParser(data, nullptr).parseAccountDetails());
        EXPECT_FALSE(MRVEventsParser(data, nullptr).parseEvents());
        EXPECT_FALSE(MRVNotificationInfoParser(data, nullptr).parseInfo());
        EXPECT_FALSE(MRVNotificationParser(data, nullptr).parseNote());
    }
}

TEST(MRVEventsParser, StaysLinearInWhatAServerRepeats)
{
    std::string events;
    for (int i = 0; i < 100'000; ++i)
        events += vevent("");
    EXPECT_FALSE(eventsIn(response(dataOf(events))));

    // The path comes last, behind every propstat that needs it.
    std::string propstats;
    for (int i = 0; i < 40'000; ++i) {
        propstats += "<D:propstat><D:prop>" + dataOf(vevent(""))
            + "</D:prop><D:status>HTTP/1.1 200 OK</D:status></D:propstat>";
    }
    EXPECT_EQ(
        eventsIn("<D:response>" + propstats + "<D:href>/e</D:href></D:response>")->size(), 40'000u);
}

TEST(MRVEventsParser, ReadsALongTextUpToALimit)
{
    const std::string blanks(5'000'000, '\n');
    EXPECT_EQ(eventsIn(response(dataOf(vevent(blanks + "SUMMARY:s\n"))))->at(0)->summary, "s");
    std::string lines;
    for (int i = 0; i < 1'000'000; ++i)
        lines += ":\n";
    EXPECT_FALSE(eventsIn(response(dataOf(vevent(lines)))));
    EXPECT_EQ(MRVEventsParser::event(vevent(lines), "", ""), nullptr);
}

TEST(MRVEventsParser, KeepsTheZonesOfTheLastResource)
{
    const auto zone = [](const std::string& name) {
        return "BEGIN:VCALENDAR\nBEGIN:VTIMEZONE\nTZID:" + name + "\nEND:VTIMEZONE\nEND:VCALENDAR";
    };
    const auto zonesAfter = [&](const std::string& text) {
        const auto resource = [](const std::string& data) {
            return response(
                "<D:getetag>1</D:getetag><C:calendar-data>" + data + "</C:calendar-data>");
        };
        MRVEventsParser parser(
            multistatus(resource(zone("Europe/Paris")) + resource(text)), nullptr);
        EXPECT_FALSE(parser.timeZones);
        parser.parseEvents();
        return parser.timeZones;
    };
    ASSERT_TRUE(zonesAfter(zone("Europe/Berlin")));
    EXPECT_TRUE(zonesAfter(zone("Europe/Berlin"))->find("Europe/Berlin"));
    EXPECT_FALSE(zonesAfter(zone("Europe/Berlin"))->find("Europe/Paris"));
    EXPECT_FALSE(zonesAfter("BEGIN:VCALENDAR\nEND:VCALENDAR"));
}

TEST(MRVEventsParser, ReadsOneTextAsItReadsAResource)
{
    const auto text = "BEGIN:VCALENDAR\n" + vevent("SUMMARY:s\n") + "END:VCALENDAR\n";
    const auto calendar = calendarAt("/cal/", knownAccount());
    const auto event = MRVEventsParser::event(text, "\"1\"", "/cal/e.ics", calendar);
    ASSERT_TRUE(event);
    EXPECT_EQ(event->uid, "u1");
    EXPECT_EQ(event->eTag, "\"1\"");
    EXPECT_EQ(event->href, "/cal/e.ics");
    EXPECT_EQ(event->calendarData, text);
    EXPECT_EQ(event->calendar, calendar);
    EXPECT_FALSE(MRVEventsParser::event("BEGIN:VCALENDAR\n" + vevent("") + vevent(""), "", ""));
    EXPECT_FALSE(MRVEventsParser::event("no calendar", "", ""));
}

TEST(ParserDeathTest, StopsWithoutAnAccount)
{
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_DEATH(MRVCalendarParser(multistatus(calendarWith("")), nullptr).parseCalendars(),
        "without an account");
}
