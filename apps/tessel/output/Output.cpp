#include "apps/tessel/output/Output.h"

#include "apps/tessel/output/Environment.h"
#include "apps/tessel/output/SafeText.h"
#include "apps/tessel/output/Secrets.h"

#include <sys/ioctl.h>
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

/// Whether the terminal knows the sequences that move and color.
bool hasSequences()
{
    const auto terminal = environmentValue("TERM");
    return terminal && *terminal != "dumb";
}

/// What is longer than a line could not be taken away again.
std::string cutToLine(const std::string& text)
{
    constexpr std::size_t usual = 80;
    winsize size {};
    const bool isKnown = ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0;
    const std::size_t width = (isKnown ? size.ws_col : usual) - 1;
    std::size_t columns = 0;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const auto octet = static_cast<unsigned char>(text[i]);
        const bool continues = (octet & 0xC0) == 0x80;
        // Nothing but ASCII is sure to be one column wide.
        columns += continues ? 0 : octet < 0x80 ? 1 : 2;
        if (columns > width) return text.substr(0, i);
    }
    return text;
}

} // namespace

Output::Output(bool isJson)
    : isJson_(isJson)
    , isTerminal_(isatty(STDOUT_FILENO) == 1)
    , hasColor_(isTerminal_ && hasSequences() && !environmentValue("NO_COLOR"))
    , hasProgress_(isatty(STDERR_FILENO) == 1 && hasSequences() && !isJson)
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
    write(stderr, "tessel: " + shown(Secrets::masked(std::string(message))) + "\n");
}

void Output::failure(std::string_view message, const Json& object) const
{
    if (!isJson_) return note(message);
    progress("");
    write(stderr, dumped(Secrets::masked(object)) + "\n");
}

void Output::progress(std::string_view line) const
{
    if (hasProgress_) write(stderr, "\r\x1b[K" + cutToLine(shown(line)));
}

bool Output::flush()
{
    return std::fflush(stdout) == 0 && !std::ferror(stdout);
}

} // namespace Tessel::App
