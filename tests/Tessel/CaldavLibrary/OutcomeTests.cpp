#include "tests/support/ClientSession.h"
#include "tests/support/SameAnswer.h"

#include <gtest/gtest.h>

#include <fstream>
#include <sstream>

using namespace Tessel;
using namespace Tessel::Test;

// What each call of the client tells its caller after each answer of a server: outcomes.txt.

namespace {

using Done = Callback<std::optional<Error>>;

void call(const std::string& name, const HostSession& session, const Done& done)
{
    auto& client = *session.client;
    const auto zone = TimeZone::withIdentifier("Europe/Berlin");
    const auto& calendar = session.calendar;
    const auto event = std::make_shared<MRVEvent>(MRVEvent {.uid = "u",
        .href = "/cal/e.ics",
        .eTag = "1",
        .calendarData = "",
        .status = "",
        .summary = "",
        .startTimeZone = zone,
        .endTimeZone = zone,
        .calendar = calendar});
    const auto note = std::make_shared<MRVNotification>(
        MRVNotification {.account = session.account, .href = "/notes/1.xml"});
    const auto second = [done](const auto&, const auto& error) { done(error); };

    if (name == "getCalendars") client.getCalendars(second);
    if (name == "createCalendar") client.create(calendar, done);
    if (name == "updateCalendar") {
        client.update(calendar, {{"color", "#0"}}, [done](const auto& results) {
            done(results ? std::nullopt : std::optional(Error {"no results", 0, ""}));
        });
    }
    if (name == "deleteCalendar") client.deleteCalendar(calendar, done);
    if (name == "share") client.share(calendar, {}, done);
    if (name == "getEvent") client.getEvent("/cal/e.ics", calendar, true, second);
    if (name == "createEvent") client.create(event, second);
    if (name == "updateEvent") client.update(event, done);
    if (name == "moveEvent") client.move(event, calendar, done);
    if (name == "deleteEvent") client.deleteEvent(event, done);
    if (name == "accept") client.acceptInvitation(note, second);
    if (name == "decline") client.declineInvitation(note, done);
    if (name == "deleteNotification") client.deleteNotification(note, done);
}

std::string outcome(const std::string& name, const std::string& answer)
{
    const auto transport = std::make_shared<SameAnswer>(answer);
    const HostSession session(transport);
    const Done done;
    call(name, session, done);
    EXPECT_TRUE(transport->answered.wait()) << name;
    if (done.count() != 1) return done.count() ? "twice" : "silent";
    return std::get<0>(done.arguments()) ? "error" : "done";
}

/// Calls `check` with the name of the call, the answer and the outcome of every cell of the table.
template <class Check> void forEachCell(Check check)
{
    std::ifstream file(TESSEL_TEST_DATA "/outcomes.txt");
    std::vector<std::string> answers;
    for (std::string line; std::getline(file, line);) {
        if (line.starts_with('#')) continue;
        std::istringstream words(line);
        std::string name;
        words >> name;
        std::vector<std::string> row(std::istream_iterator<std::string>(words), {});
        if (answers.empty()) {
            answers = row;
            continue;
        }
        ASSERT_EQ(row.size(), answers.size()) << line;
        for (std::size_t i = 0; i < row.size(); ++i)
            check(name, answers[i], row[i]);
    }
    EXPECT_FALSE(answers.empty());
}

} // namespace

TEST(Outcome, IsThatOfTheTable)
{
    forEachCell(
        [](const std::string& name, const std::string& answer, const std::string& expected) {
            if (expected == "stops") return;
            EXPECT_EQ(outcome(name, answer), expected) << name << " " << answer;
        });
}

TEST(OutcomeDeathTest, StopsTheProcessForAStatusWithoutACase)
{
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    forEachCell(
        [](const std::string& name, const std::string& answer, const std::string& expected) {
            if (expected != "stops") return;
            EXPECT_DEATH(outcome(name, answer), "no status code case .* " + answer) << name;
        });
}
