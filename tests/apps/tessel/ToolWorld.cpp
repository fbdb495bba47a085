#include "tests/apps/tessel/ToolWorld.h"

#include "Tessel/Platform/Foundation/Web/HTTPURLResponse.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <pty.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>

namespace Tessel::Test {

namespace {

using Clock = std::chrono::steady_clock;
constexpr auto longest = std::chrono::seconds(60);

[[noreturn]] void execute(
    const Words& arguments, const std::map<std::string, std::string>& environment)
{
    for (const auto& [name, value] : environment)
        value.empty() ? ::unsetenv(name.c_str()) : ::setenv(name.c_str(), value.c_str(), 1);
    std::vector<char*> words {const_cast<char*>(TESSEL_TOOL)};
    for (const auto& argument : arguments)
        words.push_back(const_cast<char*>(argument.c_str()));
    words.push_back(nullptr);
    ::execv(TESSEL_TOOL, words.data());
    ::_exit(127);
}

/// Reads until all have been closed, or it has taken too long.
void drain(std::vector<std::pair<int, std::string*>> files,
    const std::function<void(const std::string&)>& heard = {})
{
    const auto end = Clock::now() + longest;
    while (!files.empty() && Clock::now() < end) {
        std::vector<pollfd> waiting;
        for (const auto& [file, text] : files)
            waiting.push_back({file, POLLIN, 0});
        ::poll(waiting.data(), waiting.size(), 1000);
        for (std::size_t i = waiting.size(); i-- > 0;) {
            if (!waiting[i].revents) continue;
            char bytes[4096];
            const auto count = ::read(files[i].first, bytes, sizeof bytes);
            if (count > 0) {
                files[i].second->append(bytes, std::size_t(count));
                if (heard) heard(*files[i].second);
            } else {
                files.erase(files.begin() + std::ptrdiff_t(i));
            }
        }
    }
}

int statusOf(pid_t process)
{
    int status = 0;
    ::waitpid(process, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

ToolRun runProcess(const Words& arguments, const std::map<std::string, std::string>& environment,
    const std::function<void(pid_t)>& meanwhile = {})
{
    int out[2];
    int err[2];
    if (::pipe2(out, O_CLOEXEC) != 0 || ::pipe2(err, O_CLOEXEC) != 0) return {};
    const auto process = ::fork();
    if (process == 0) {
        ::setsid(); // without a terminal
        ::dup2(::open("/dev/null", O_RDONLY), 0);
        ::dup2(out[1], 1);
        ::dup2(err[1], 2);
        execute(arguments, environment);
    }
    ::close(out[1]);
    ::close(err[1]);
    if (meanwhile) meanwhile(process);
    ToolRun run;
    drain({{out[0], &run.out}, {err[0], &run.err}});
    run.status = statusOf(process);
    ::close(out[0]);
    ::close(err[0]);
    return run;
}

} // namespace

ToolWorld::ToolWorld(bool hasAccount)
    : environment {{"XDG_CONFIG_HOME", folder() + "/config"}, {"XDG_DATA_HOME", folder() + "/data"},
        {"TESSEL_PASSWORD", "top secret"}, {"TESSEL_TOKEN", ""}, {"TZ", "Europe/Berlin"},
        {"DBUS_SESSION_BUS_ADDRESS", "unix:path=/nowhere"}, {"LC_ALL", "C.UTF-8"},
        {"TERM", "xterm"}}
    , wire_(std::make_unique<ScriptedServer>(
          [this](const URLRequest& request) { return answer(request); }))
{
    server->addCalendar("/home/a/");
    server->addCalendar("/home/b/");
    if (!hasAccount) return;
    const auto added
        = run({"account", "add", "--server", address(), "--user", "alice", "--insecure"});
    EXPECT_EQ(added.status, 0) << added.all();
}

std::string ToolWorld::accountFile(const std::string& ending) const
{
    const auto address = this->address();
    return folder() + "/data/tessel/alice@127.0.0.1%3a" + address.substr(address.rfind(':') + 1)
        + ending;
}

ScriptedAnswer ToolWorld::answer(const URLRequest& request) const
{
    const auto there = [&](const std::string& url) {
        const auto path = url.find('/', url.find("://") + 3);
        return FakeCalendarServer::address + url.substr(path);
    };
    URLRequest asked(there(request.url()));
    asked.method = request.method;
    asked.headers = request.headers;
    asked.body = request.body;
    if (const auto to = request.headers.value("Destination"))
        asked.headers.set("Destination", there(*to));
    const auto reply = server->replyTo(asked);
    ScriptedAnswer answer;
    if (reply.status == 0) {
        answer.end = ScriptedAnswer::End::stall;
        return answer;
    }
    answer.bytes = "HTTP/1.1 " + std::to_string(reply.status) + " Said\r\n";
    for (const auto& [name, value] : reply.headers.fields())
        answer.bytes += name + ": " + value + "\r\n";
    answer.bytes += "Content-Type: application/xml\r\nContent-Length: "
        + std::to_string(reply.body.size()) + "\r\n\r\n" + reply.body;
    return answer;
}

ToolRun ToolWorld::run(const Words& arguments) const
{
    auto run = runProcess(arguments, environment);
    for (const auto* word : {"SessionSettings", "MNetworkConfiguration", "allow its origin"})
        EXPECT_FALSE(has(run.all(), word)) << "This is advice for programs:\n" << run.all();
    return run;
}

ToolRun ToolWorld::runInTerminal(
    const Words& arguments, const std::string& question, const std::string& typed) const
{
    int terminal = -1;
    const winsize size {.ws_row = 25, .ws_col = 60, .ws_xpixel = 0, .ws_ypixel = 0};
    const auto process = ::forkpty(&terminal, nullptr, nullptr, &size);
    if (process == 0) execute(arguments, environment);
    ToolRun run;
    bool hasTyped = question.empty();
    drain({{terminal, &run.out}}, [&](const std::string& heard) {
        if (hasTyped || heard.find(question) == heard.npos) return;
        hasTyped = true;
        const auto line = typed + "\n";
        EXPECT_EQ(::write(terminal, line.data(), line.size()), ssize_t(line.size()));
    });
    run.status = statusOf(process);
    ::close(terminal);
    return run;
}

ToolRun ToolWorld::interrupt(
    const Words& arguments, int signal, std::chrono::milliseconds& lived) const
{
    Clock::time_point sent;
    auto run = runProcess(arguments, environment, [&](pid_t process) {
        ::usleep(700'000); // it waits for the server by then
        sent = Clock::now();
        ::kill(process, signal);
    });
    lived = std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - sent);
    return run;
}

bool has(const std::string& text, const std::string& part)
{
    return text.find(part) != text.npos;
}

std::size_t count(const std::string& text, const std::string& part)
{
    std::size_t found = 0;
    for (auto at = text.find(part); at != text.npos; at = text.find(part, at + part.size()))
        ++found;
    return found;
}

std::string eventWith(const std::string& uid, const std::string& lines)
{
    return "BEGIN:VCALENDAR\r\nVERSION:2.0\r\nPRODID:-//a//b//EN\r\nBEGIN:VEVENT\r\nUID:" + uid
        + "\r\nDTSTAMP:20240101T000000Z\r\n" + lines + "END:VEVENT\r\nEND:VCALENDAR\r\n";
}

void expectParts(const std::string& text, const Words& parts)
{
    for (const auto& part : parts) {
        const bool isAbsent = part.starts_with('!');
        EXPECT_EQ(text.find(part.substr(isAbsent ? 1 : 0)) == text.npos, isAbsent)
            << part << " in:\n"
            << text.substr(0, 10'000);
    }
}

} // namespace Tessel::Test
