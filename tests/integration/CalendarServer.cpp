#include "tests/integration/CalendarServer.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <map>
#include <sstream>

namespace Tessel::Test {

namespace {

std::string readLine(int file)
{
    std::string line;
    for (char c; read(file, &c, 1) == 1 && c != '\n';)
        line += c;
    return line;
}

} // namespace

const CalendarServer& CalendarServer::named(const std::string& name)
{
    static std::map<std::string, CalendarServer> servers;
    return servers.try_emplace(name, name).first->second;
}

CalendarServer::CalendarServer(const std::string& name)
{
    std::array<int, 2> input {};
    std::array<int, 2> output {};
    if (pipe2(input.data(), O_CLOEXEC) != 0) return;
    lifeline_ = input[1];
    if (pipe2(output.data(), O_CLOEXEC) == 0) {
        posix_spawn_file_actions_t actions;
        posix_spawn_file_actions_init(&actions);
        posix_spawn_file_actions_adddup2(&actions, input[0], STDIN_FILENO);
        posix_spawn_file_actions_adddup2(&actions, output[1], STDOUT_FILENO);
        std::string program = TESSEL_TEST_DATA "/keep-server";
        std::string server = name;
        std::array<char*, 3> arguments {program.data(), server.data(), nullptr};
        if (posix_spawn(&keeper_, program.c_str(), &actions, nullptr, arguments.data(), environ)
            != 0) {
            keeper_ = -1;
        }
        posix_spawn_file_actions_destroy(&actions);
        close(output[1]);

        std::istringstream line(readLine(output[0]));
        close(output[0]);
        std::string verdict;
        std::string port;
        line >> verdict >> std::ws;
        if (verdict == "ready" && line >> port >> authorityFile_) address_ = "127.0.0.1:" + port;
        if (verdict == "absent") std::getline(line, absence_);
    }
    close(input[0]);
}

CalendarServer::~CalendarServer()
{
    if (lifeline_ >= 0) close(lifeline_);
    if (keeper_ > 0) waitpid(keeper_, nullptr, 0);
}

} // namespace Tessel::Test
