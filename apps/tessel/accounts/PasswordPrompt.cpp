#include "apps/tessel/accounts/PasswordPrompt.h"

#include <fcntl.h>
#include <termios.h>
#include <unistd.h>

#include <mutex>

namespace Tessel::App {

namespace {

std::mutex mutex;
int terminal = -1;
termios before {};

void say(int file, const std::string& text)
{
    [[maybe_unused]] const auto count = ::write(file, text.data(), text.size());
}

} // namespace

void endPrompt()
{
    const std::lock_guard lock(mutex);
    if (terminal < 0) return;
    tcsetattr(terminal, TCSAFLUSH, &before);
    terminal = -1;
}

std::optional<std::string> askForPassword(const std::string& question)
{
    const int file = ::open("/dev/tty", O_RDWR | O_CLOEXEC | O_NOCTTY);
    if (file < 0) return std::nullopt;
    {
        const std::lock_guard lock(mutex);
        if (tcgetattr(file, &before) != 0) {
            ::close(file);
            return std::nullopt;
        }
        auto silent = before;
        silent.c_lflag &= ~static_cast<tcflag_t>(ECHO);
        tcsetattr(file, TCSAFLUSH, &silent);
        terminal = file;
    }
    say(file, question);
    std::string answer;
    bool isWhole = false;
    for (char c = 0; !isWhole && ::read(file, &c, 1) == 1;) {
        isWhole = c == '\n';
        if (!isWhole) answer += c;
    }
    say(file, "\n");
    endPrompt();
    ::close(file);
    if (!isWhole && answer.empty()) return std::nullopt;
    return answer;
}

} // namespace Tessel::App
