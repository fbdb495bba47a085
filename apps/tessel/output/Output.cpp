#include "apps/tessel/output/Output.h"

#include "apps/tessel/output/Environment.h"
#include "apps/tessel/output/SafeText.h"

#include <unistd.h>

#include <cstdio>

namespace Tessel::App {

namespace {

void write(std::FILE* file, const std::string& text)
{
    std::fwrite(text.data(), 1, text.size(), file);
}

std::string dumped(const Json& object)
{
    return escapedJson(object.dump(-1, ' ', false, Json::error_handler_t::replace));
}

bool allowsColor()
{
    const auto terminal = environmentValue("TERM");
    return !environmentValue("NO_COLOR") && terminal && *terminal != "dumb";
}

} // namespace

Output::Output(bool isJson)
    : isJson_(isJson)
    , isTerminal_(isatty(STDOUT_FILENO) == 1)
    , hasTerminalMessages_(isatty(STDERR_FILENO) == 1)
    , hasColor_(isTerminal_ && allowsColor())
{
}

void Output::result(std::string_view line, const Json& object) const
{
    write(stdout, (isJson_ ? dumped(object) : shown(line)) + "\n");
}

void Output::line(std::string_view line) const
{
    if (!isJson_) write(stdout, shown(line) + "\n");
}

void Output::object(const Json& object) const
{
    if (isJson_) write(stdout, dumped(object) + "\n");
}

void Output::heading(std::string_view line) const
{
    if (isJson_) return;
    write(stdout, hasColor_ ? "\x1b[1m" + shown(line) + "\x1b[0m\n" : shown(line) + "\n");
}

void Output::text(std::string_view text) const
{
    write(stdout, isTerminal_ ? shownLines(text) : std::string(text));
}

void Output::note(std::string_view message) const
{
    progress("");
    std::fflush(stdout);
    write(stderr, "tessel: " + shown(message) + "\n");
}

void Output::failure(std::string_view message, const Json& object) const
{
    if (!isJson_) return note(message);
    progress("");
    write(stderr, dumped(object) + "\n");
}

void Output::progress(std::string_view line) const
{
    if (hasTerminalMessages_ && !isJson_) write(stderr, "\r\x1b[K" + shown(line));
}

bool Output::flush()
{
    return std::fflush(stdout) == 0 && !std::ferror(stdout);
}

} // namespace Tessel::App
