#include "Tessel/Session/Session.h"
#include "tests/support/CaseFile.h"
#include "tests/support/ScriptedServer.h"

#include <gtest/gtest.h>

#include <map>
#include <mutex>
#include <sstream>

using namespace Tessel;
using namespace Tessel::Test;

namespace {

std::vector<std::string> lines(const Case& each, const std::string& section)
{
    std::vector<std::string> found;
    const auto text = each.sections.find(section);
    if (text == each.sections.end()) return found;
    std::istringstream stream(text->second);
    for (std::string line; std::getline(stream, line);)
        found.push_back(line);
    return found;
}

std::string response(const std::string& href, const std::string& properties)
{
    return "<d:response><d:href>" + href + "</d:href><d:propstat><d:prop>" + properties
        + "</d:prop><d:status>HTTP/1.1 200 OK</d:status></d:propstat></d:response>";
}

std::string multistatus(const std::string& path, std::istream& words)
{
    std::string properties;
    std::string members;
    for (std::string word; words >> word;) {
        const auto value = "<d:href>" + word.substr(word.find('=') + 1) + "</d:href>";
        if (word == "nobody")
            properties
                += "<d:current-user-principal><d:unauthenticated/></d:current-user-principal>";
        else if (word.starts_with("user="))
            properties += "<d:current-user-principal>" + value + "</d:current-user-principal>";
        else if (word.starts_with("home="))
            properties += "<c:calendar-home-set>" + value + "</c:calendar-home-set>";
        else if (word.starts_with("calendar="))
            members += response(word.substr(word.find('=') + 1),
                "<d:resourcetype><d:collection/><c:calendar/></d:resourcetype>");
        else
            ADD_FAILURE() << "no such word: " << word;
    }
    const auto own = "<d:resourcetype><d:collection/></d:resourcetype>" + properties;
    return R"(<d:multistatus xmlns:d="DAV:" xmlns:c="urn:ietf:params:xml:ns:caldav">)"
        + response(path, own) + members + "</d:multistatus>";
}

std::string answer(const std::string& path, const std::string& text)
{
    std::istringstream words(text);
    int status = 0;
    words >> status;
    auto head = "HTTP/1.1 " + std::to_string(status) + " As Written\r\n";
    std::string body;
    if (std::string target; status / 100 == 3 && words >> target)
        head += "Location: " + target + "\r\n";
    if (status == 207) body = multistatus(path, words);
    return head + "Content-Length: " + std::to_string(body.size()) + "\r\n\r\n" + body;
}

class OpeningCase : public testing::TestWithParam<Case> { };

} // namespace

TEST_P(OpeningCase, EndsAsWritten)
{
    std::map<std::string, std::string> answers {};
    for (const auto& line : lines(GetParam(), "answers")) {
        const auto colon = line.find(": ");
        answers.emplace(line.substr(0, colon), line.substr(colon + 2));
    }
    std::mutex mutex;
    std::vector<std::string> asked;
    const ScriptedServer server([&](const URLRequest& request) -> ScriptedAnswer {
        const auto& url = request.url();
        const auto path = url.substr(url.find('/', url.find("://") + 3));
        const auto what = request.method + " " + path;
        const std::lock_guard lock(mutex);
        asked.push_back(what);
        const auto found = answers.find(what);
        const auto* const otherwise = request.method == "OPTIONS" ? "200" : "404";
        return {.bytes = answer(path, found == answers.end() ? otherwise : found->second)};
    });

    const auto path = lines(GetParam(), "path");
    const auto session = wait(
        Session::open({.server = server.url(path.empty() ? "" : path.front()), .user = "alice"},
            Password {"secret"}, {}, {.allowsPlainHTTP = true}));
    const auto home = lines(GetParam(), "home");
    auto failure = lines(GetParam(), "failure");
    if (failure.empty()) {
        ASSERT_TRUE(session) << session.reason();
        EXPECT_EQ(session.value()->place().homes, std::vector {server.url(home.at(0))});
    } else {
        ASSERT_FALSE(session);
        EXPECT_EQ(nameOf(session.failure().kind), failure.front()) << session.reason();
        failure.erase(failure.begin());
        const auto told = session.failure().method + " " + session.failure().url + " "
            + std::to_string(session.failure().status) + ": " + session.reason();
        for (const auto& text : failure)
            EXPECT_NE(told.find(text), told.npos) << text << " is not in: " << told;
    }
    if (const auto all = lines(GetParam(), "asked"); !all.empty()) {
        EXPECT_EQ(asked, all);
    }
}

INSTANTIATE_TEST_SUITE_P(All, OpeningCase, testing::ValuesIn(readCases(TESSEL_TEST_DATA "/cases")),
    [](const auto& info) { return info.param.name; });
