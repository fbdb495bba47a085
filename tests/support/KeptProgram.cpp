#include "tests/support/KeptProgram.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>

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

KeptProgram::KeptProgram(std::vector<std::string> words)
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
        std::vector<char*> arguments;
        for (auto& word : words)
            arguments.push_back(word.data());
        arguments.push_back(nullptr);
        if (posix_spawn(&process_, arguments[0], &actions, nullptr, arguments.data(), environ) != 0)
            process_ = -1;
        posix_spawn_file_actions_destroy(&actions);
        close(output[1]);
        line_ = readLine(output[0]);
        close(output[0]);
    }
    close(input[0]);
}

KeptProgram::~KeptProgram()
{
    if (lifeline_ >= 0) close(lifeline_);
    if (process_ > 0) waitpid(process_, nullptr, 0);
}

} // namespace Tessel::Test
