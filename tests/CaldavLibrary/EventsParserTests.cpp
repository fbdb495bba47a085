#include "CaldavLibrary/Parsers/MRVAlarmReader.h"
#include "CaldavLibrary/Parsers/MRVEventDescriptorsParser.h"
#include "CaldavLibrary/Parsers/MRVEventsParser.h"
#include "support/TestHost.h"

#include <gtest/gtest.h>

using namespace Tessel;
using namespace Tessel::Test;

namespace {

constexpr auto ok = "HTTP/1.1 200 OK";

std::string response(const std::string& prop, const std::string& status = ok,
    const std::string& href = "<D:href>/cal/e%201.ics</D:href>")
{
    return "<D:response>" + href + "<D:propstat><D:prop>" + prop + "</D:prop><D:status>" + status
        + "</D:status></D:propstat></D:response>";
}

std::string multistatus(const std::string& responses)
{
    return R"(<D:multistatus xmlns:D="DAV:" xmlns:C="urn:ietf:params:xml:ns:caldav">)" + responses
        + "</D:multistatus>";
}

std::optional<MRVEventsParser::Events> parse(const std::string& responses)
{
    MRVEventsParser parser(Data(multistatus(responses)), nullptr);
    parser.calendar = calendarAt("/cal/", knownAccount());
    return parser.parseEvents();
}

std::string dataOf(const std::string& vevents)
{
    return "<D:getetag>\"1\"</D:getetag><C:schedule-tag>s</C:schedule-tag><C:calendar-data>"
           "BEGIN:VCALENDAR\nBEGIN:VTIMEZONE\nTZID:Europe/Berlin\nEND:VTIMEZONE\n"
        + vevents + "END:VCALENDAR\n</C:calendar-data>";
}

std::string vevent(const std::string& lines)
{
    return "BEGIN:VEVENT\nUID:u1\n" + lines + "END:VEVENT\n";
}

std::shared_ptr<MRVEvent> event(const std::string& lines)
{
    const auto events = parse(response(dataOf(vevent(lines))));
    if (!events || events->size() != 1) throw std::runtime_error("not one event");
    return events->front();
}

Date utc(std::int64_t seconds)
{
    return Date::fromSecondsSince1970(seconds);
}

constexpr std::int64_t january2 = 1704153600; // 2024-01-02T00:00:00Z

bool isNow(const Date& date)
{
    return Date().timeIntervalSince1970() - date.timeIntervalSince1970() < 60;
}

} // namespace

TEST(MRVEventsParser, MapsAnEvent)
{
    const auto read = event("SUMMARY:Gr\xC3\xBC\xC3\x9F"
                            "e\nDESCRIPTION:a\\, b\nSTATUS:CONFIRMED\n"
                            "CREATED:20240102T000000Z\nLAST-MODIFIED:20240102T000001Z\n"
                            "DTSTART;TZID=Europe/Berlin:20240102T090000\n"
                            "DTEND:20240102T100000Z\nRRULE:FREQ=DAILY\nX-OTHER:1\n");
    EXPECT_EQ(read->uid, "u1");
    EXPECT_EQ(read->href, "/cal/e%201.ics");
    EXPECT_EQ(read->eTag, "\"1\"");
    EXPECT_EQ(read->scheduleTag, std::nullopt);
    EXPECT_EQ(read->summary,
        "Gr\xC3\xBC\xC3\x9F"
        "e");
    EXPECT_EQ(read->desc, "a\\, b");
    EXPECT_EQ(read->status, "CONFIRMED");
    EXPECT_EQ(read->createdDate, utc(january2));
    EXPECT_EQ(read->lastModifiedDate, utc(january2 + 1));
    EXPECT_EQ(read->startDate, utc(january2 + 8 * 3600));
    EXPECT_EQ(read->startTimeZone->identifier(), "Europe/Berlin");
    EXPECT_EQ(read->endDate, utc(january2 + 10 * 3600));
    EXPECT_FALSE(read->endTimeZone);
    EXPECT_EQ(read->recurRule, "FREQ=DAILY");
    EXPECT_FALSE(read->recurrenceId || read->occurrences || read->allDay);
    EXPECT_TRUE(read->attendees->empty());
    EXPECT_EQ(read->calendar->href, "/cal/");
    EXPECT_NE(read->calendarData.find("X-OTHER:1"), std::string::npos);
}

TEST(MRVEventsParser, ReadsStartAndEndThroughTheirParameters)
{
    const auto allDay = event("DTSTART;VALUE=DATE:20240102\nDTEND;VALUE=DATE:20240103\n");
    EXPECT_TRUE(allDay->allDay);
    EXPECT_EQ(allDay->startDate, utc(january2));
    EXPECT_EQ(allDay->endDate, utc(january2 + 86400));

    const auto unknown = event("DTSTART;TZID=Nowhere/Else:20240102T090000\n");
    EXPECT_FALSE(unknown->startTimeZone);
    EXPECT_EQ(unknown->startDate, utc(january2 + 9 * 3600));

    const auto zulu = event("DTSTART;TZID=Europe/Berlin:20240102T090000Z\n");
    EXPECT_FALSE(zulu->startTimeZone);
    EXPECT_EQ(zulu->startDate, utc(january2 + 9 * 3600));

    EXPECT_TRUE(isNow(event("DTSTART;X-OTHER=1:20240102T090000Z\n")->startDate));
}

TEST(MRVEventsParser, KeepsThePresentForDatesThatAreMissingOrUnreadable)
{
    const auto read = event("DTSTART:garbage\nDTEND;TZID=Europe/Berlin:20241301T000000\n"
                            "CREATED:\nLAST-MODIFIED\n");
    EXPECT_TRUE(isNow(read->startDate));
    EXPECT_TRUE(isNow(read->endDate));
    EXPECT_TRUE(isNow(read->createdDate));
    EXPECT_TRUE(isNow(read->lastModifiedDate));
}

TEST(MRVEventsParser, ReadsPeople)
{
    const auto read = event(
        "ORGANIZER:mailto:o@example.com\n"
        "ATTENDEE;CN=\"Ada\";EMAIL=a@example.com;ROLE=CHAIR;CUTYPE=INDIVIDUAL;PARTSTAT=ACCEPTED;"
        "SCHEDULE-STATUS=2.0:mailto:a@example.com\nATTENDEE:/p/b\n");
    ASSERT_EQ(read->attendees->size(), 3u);
    const auto& organizer = *read->attendees->at(0);
    EXPECT_TRUE(organizer.isOrganizer);
    EXPECT_EQ(organizer.role, "organizer");
    EXPECT_EQ(organizer.email + organizer.cn, "");
    EXPECT_EQ(organizer.href, "mailto:o@example.com");
    const auto& ada = *read->attendees->at(1);
    EXPECT_FALSE(ada.isOrganizer);
    EXPECT_EQ(ada.cn, "\"Ada\"");
    EXPECT_EQ(ada.email, "a@example.com");
    EXPECT_EQ(ada.role, "CHAIR");
    EXPECT_EQ(ada.type, "INDIVIDUAL");
    EXPECT_EQ(ada.participationStatus, "ACCEPTED");
    EXPECT_EQ(ada.scheduleStatus, "2.0");
    const auto& bare = *read->attendees->at(2);
    EXPECT_EQ(bare.href, "/p/b");
    EXPECT_FALSE(bare.type || bare.participationStatus || bare.scheduleStatus);
}

TEST(MRVEventsParser, ReadsAlarms)
{
    const auto alarm = [](const std::string& lines) {
        return event("BEGIN:VALARM\n" + lines + "END:VALARM\n")->alarms->at(0);
    };
    EXPECT_EQ(alarm("TRIGGER:-PT15M\nDESCRIPTION:d\n")->relativeTriggerTime, -900);
    EXPECT_EQ(alarm("TRIGGER;VALUE=DURATION:P1DT2H\n")->relativeTriggerTime, 93600);
    EXPECT_EQ(alarm("TRIGGER;VALUE=DATE-TIME:20240102T083000Z\n")->absoluteTriggerTime,
        utc(january2 + 8 * 3600 + 1800));
    EXPECT_EQ(alarm("TRIGGER:20240102T000000Z\n")->absoluteTriggerTime, utc(january2));
    EXPECT_EQ(alarm("ACTION:EMAIL\n")->action, MRVAlarmAction::email);
    EXPECT_EQ(alarm("ACTION:AUDIO\nACTION:PROCEDURE\n")->action, MRVAlarmAction::audio);
    const auto untouched = alarm("TRIGGER;RELATED=END:-PT5M\n");
    EXPECT_FALSE(untouched->relativeTriggerTime || untouched->absoluteTriggerTime);
    EXPECT_EQ(untouched->action, MRVAlarmAction::display);
    EXPECT_TRUE(event("")->alarms->empty());
}

TEST(MRVAlarmDuration, SumsItsUnits)
{
    using MRVAlarmReader::duration;
    EXPECT_EQ(duration("P2W"), 1209600);
    EXPECT_EQ(duration("-P1DT1H1M1S"), -90061);
    EXPECT_EQ(duration("+PT90S"), 90);
    EXPECT_EQ(duration("PT1.5M"), 1); // "." is a unit of its own and counts as seconds
    EXPECT_EQ(duration("P"), 0);
    EXPECT_EQ(duration(""), 0);
}

TEST(MRVEventsParser, DropsResourcesWithSeveralEvents)
{
    const auto master = vevent("RRULE:FREQ=DAILY\n");
    const auto instance = vevent("RECURRENCE-ID:20240102T090000Z\n");
    EXPECT_FALSE(parse(response(dataOf(master + instance))));
    const auto events = parse(response(dataOf(master + instance)) + response(dataOf(instance)));
    ASSERT_EQ(events->size(), 1u);
    EXPECT_EQ(events->front()->recurrenceId, "20240102T090000Z");
}

TEST(MRVEventsParser, StaysLinearInWhatAServerRepeats)
{
    std::string events;
    for (int i = 0; i < 100'000; ++i)
        events += vevent("");
    EXPECT_FALSE(parse(response(dataOf(events))));

    // The path comes last, behind every propstat that needs it.
    std::string propstats;
    for (int i = 0; i < 40'000; ++i) {
        propstats += "<D:propstat><D:prop>" + dataOf(vevent("")) + "</D:prop><D:status>" + ok
            + "</D:status></D:propstat>";
    }
    EXPECT_EQ(
        parse("<D:response>" + propstats + "<D:href>/e</D:href></D:response>")->size(), 40'000u);
}

TEST(MRVEventsParser, PassesOverWhatItCannotUse)
{
    const auto data = dataOf(vevent(""));
    EXPECT_FALSE(parse(""));
    EXPECT_FALSE(parse(response(data, "HTTP/1.1 404 Not Found")));
    EXPECT_FALSE(parse(response(data, ok, "")));
    EXPECT_FALSE(parse(response("<D:resourcetype>x</D:resourcetype>" + data)));
    EXPECT_FALSE(parse(response("<D:getetag>1</D:getetag>")));
    EXPECT_FALSE(parse(response("<C:calendar-data>x</C:calendar-data>")));
    EXPECT_FALSE(parse(response(dataOf("BEGIN:VTODO\nUID:t\nEND:VTODO\n"))));
    EXPECT_TRUE(parse(response("<D:resourcetype/>" + data)));
    EXPECT_TRUE(parse(response(data, "HTTP/1.1 404 Not Found") + response(data)));
    EXPECT_FALSE(MRVEventsParser(Data("<x"), nullptr).parseEvents());
}

TEST(MRVEventsParserDeathTest, StopsOnBrokenEventsAndDurations)
{
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_DEATH(parse(response(dataOf("BEGIN:VEVENT\nSUMMARY:a\nEND:VEVENT\n"))), "no UID");
    EXPECT_DEATH(MRVAlarmReader::duration("PT15"), "without a unit");
    EXPECT_DEATH(MRVAlarmReader::duration("PxM"), "holds no number");
    EXPECT_DEATH(MRVAlarmReader::duration("PnanM"), "holds no number");
    EXPECT_DEATH(MRVAlarmReader::duration("P9e307W9e307W"), "too long");
}

TEST(MRVEventDescriptorsParser, ListsSuccessfulPropstats)
{
    const auto parse = [](const std::string& responses) {
        return MRVEventDescriptorsParser(Data(multistatus(responses)), nullptr)
            .parseEventsDescription();
    };
    const std::string tag = "<D:getetag>\"a\"</D:getetag>";
    EXPECT_FALSE(parse(""));
    EXPECT_FALSE(parse(response(tag, "HTTP/1.1 404 Not Found")));
    EXPECT_FALSE(parse(response("", ok)));
    EXPECT_FALSE(parse(response(tag, ok, "")));

    const auto twice = parse("<D:response><D:href>/a%20b</D:href><D:propstat><D:prop>" + tag
        + "</D:prop><D:status>200</D:status></D:propstat><D:propstat><D:prop>" + tag
        + "</D:prop><D:status>HTTP/1.1 200 OK</D:status></D:propstat></D:response>"
        + response("<D:getetag>b</D:getetag>"));
    ASSERT_EQ(twice->size(), 3u);
    EXPECT_EQ(twice->at(1)->href, "/a%20b");
    EXPECT_EQ(twice->at(1)->eTag, "\"a\"");
    EXPECT_EQ(twice->at(2)->eTag, "b");
}
