#include "tests/Tessel/Session/World.h"

#include <gtest/gtest.h>

#include <fstream>
#include <initializer_list>
#include <iterator>
#include <set>
#include <sstream>
#include <thread>

using namespace Tessel;
using namespace Tessel::Test;

// What each call of a session tells its host after each answer of a server: outcomes.txt.

namespace {

template <class T> std::string told(const Result<T>& result)
{
    if (result) return "done";
    EXPECT_FALSE(result.reason().empty());
    std::string kind(result.failure().isUncertain ? "?" : "");
    return kind.append(nameOf(result.failure().kind));
}

std::string call(const std::string& name, const World& world, const Resource& held)
{
    auto& session = *world.session;
    if (name == "create") {
        const auto event = EventText::read(eventText("two")).value();
        return told(wait(session.create("/home/a/", event)));
    }
    if (name == "change") return told(wait(session.change(held, {.summary = "New"})));
    if (name == "remove") return told(wait(session.remove(held)));
    if (name == "move") return told(wait(session.move(held, "/home/b/")));
    if (name == "fetch") return told(wait(session.fetch("/home/a/one.ics")));
    if (name == "calendars") return told(wait(session.calendars()));
    if (name == "createCalendar") return told(wait(session.createCalendar({.displayName = "C"})));
    if (name == "changeCalendar")
        return told(wait(session.changeCalendar("/home/a/", {.displayName = "C"})));
    if (name == "deleteCalendar") return told(wait(session.deleteCalendar("/home/a/")));
    return "no such call";
}

/// Puts the answer in the way of the first request of the method.
FakeCalendarServer::Fault faulty(
    const std::string& method, const std::string& answer, const std::shared_ptr<int>& done)
{
    return [method, answer, done, isOver = std::make_shared<bool>(false)](const URLRequest& request,
               const auto& apply) -> std::optional<FakeCalendarServer::Reply> {
        if (request.method != method) return std::nullopt;
        if (*isOver) {
            ++*done;
            return std::nullopt;
        }
        *isOver = true;
        const bool isDone = answer == "after" || answer.starts_with("did");
        const bool isClaimed = answer.starts_with("not");
        if (isDone) {
            ++*done;
            apply();
        }
        if (answer == "after") return FakeCalendarServer::Reply {};
        if (answer == "before") return FakeCalendarServer::Reply {};
        if (answer == "nobody") return FakeCalendarServer::Reply {.isUnreachable = true};
        if (method == "PROPFIND" && answer == "207") return std::nullopt;
        if (answer.ends_with("207")) {
            const std::string status = answer == "207" ? "403 Forbidden" : "999 Odd";
            return FakeCalendarServer::Reply {.status = 207,
                .body = "<multistatus xmlns=\"DAV:\"><response><href>/x</href><status>HTTP/1.1 "
                    + status + "</status></response></multistatus>"};
        }
        FakeCalendarServer::Reply reply {
            .status = std::stoi(answer.substr(isDone || isClaimed ? 3 : 0))};
        if (reply.status < 300 && !isClaimed) {
            ++*done;
            reply.headers = apply().headers;
        }
        return reply;
    };
}

} // namespace

TEST(SessionOutcome, IsThatOfTheTable)
{
    std::ifstream file(TESSEL_TEST_DATA "/outcomes.txt");
    std::vector<std::string> answers;
    for (std::string line; std::getline(file, line);) {
        if (line.starts_with('#')) continue;
        std::istringstream words(line);
        std::string name;
        std::string method;
        words >> name;
        if (name != "answer") words >> method;
        const std::vector<std::string> row(std::istream_iterator<std::string>(words), {});
        if (answers.empty()) {
            answers = row;
            continue;
        }
        ASSERT_EQ(row.size(), answers.size()) << line;
        for (std::size_t i = 0; i < row.size(); ++i) {
            const World world;
            const auto held = world.fetch();
            const auto done = std::make_shared<int>(0);
            world.server->setFault(faulty(method, answers[i], done));
            EXPECT_EQ(call(name, world, held), row[i]) << name << " " << answers[i];
            const int most = method == "GET" || method == "PROPFIND" ? *done : 1;
            EXPECT_LE(*done, most) << name << " is done twice after " << answers[i];
        }
    }
    EXPECT_FALSE(answers.empty());
}

/// Two hosts edit one event at once: what was reported as done is in the final text.
TEST(SessionOutcome, NoEditThatWasReportedAsDoneIsLost)
{
    const World world;
    const auto edits = [](const std::string& name) {
        const auto session
            = wait(Session::open({.server = "server.example", .user = name}, Password {"secret"}))
                  .value();
        std::vector<std::string> done;
        auto held = wait(session->fetch("/home/a/one.ics")).value();
        for (int i = 0; i < 250; ++i) {
            const auto address = name + std::to_string(i) + "@example.com";
            const auto changed
                = wait(session->change(held, {.attendees = {{.address = "mailto:" + address}}}));
            if (!changed) continue;
            done.push_back(address);
            held = changed.value().resource;
        }
        return done;
    };
    std::vector<std::string> first;
    std::thread other([&] { first = edits("a"); });
    const std::vector<std::string> second = edits("b");
    other.join();
    EXPECT_GE(first.size() + second.size(), 250u);
    const auto text = EventText::read(world.server->text("/home/a/one.ics").value()).value();
    std::set<std::string> there;
    for (const auto& attendee : text.main().attendees())
        there.insert(attendee.address);
    for (const auto* done :
        std::initializer_list<const std::vector<std::string>*> {&first, &second}) {
        for (const auto& address : *done)
            EXPECT_TRUE(there.contains("mailto:" + address) || there.contains(address)) << address;
    }
}
