#include "apps/tessel/commands/CommandLine.h"
#include "apps/tessel/commands/EventVersions.h"
#include "apps/tessel/output/Environment.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>

using namespace Tessel;
using namespace Tessel::App;

namespace {

Json describe(const Failure& failure)
{
    Json object {{"error", reasonOf(failure)}, {"kind", std::string(nameOf(failure.kind))}};
    if (failure.status) object["status"] = failure.status;
    if (!failure.url.empty()) object.update({{"method", failure.method}, {"url", failure.url}});
    if (!failure.serverWords.empty()) object["serverWords"] = failure.serverWords;
    if (failure.isUncertain) object["isUncertain"] = true;
    if (failure.texts)
        object.update({{"mine", failure.texts->mine}, {"theirs", failure.texts->theirs}});
    return object;
}

void report(const Output& out, const Failure& failure)
{
    out.failure(reasonOf(failure), describe(failure));
    if (!failure.texts || out.isJson()) return;
    noteVersions(out, *failure.texts);
    out.note(
        "  Nothing of yours was written. `tessel sync` brings theirs; make the change again if "
        "it is still wanted.");
}

/// A descriptor that is closed would be that of the next file or connection, and get what is said.
void fillClosedDescriptors()
{
    for (const int number : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        if (::fcntl(number, F_GETFD) != -1) continue;
        // Nobody can have read what was to be written to standard output: that has to fail.
        const int mode = number == STDOUT_FILENO ? O_RDONLY : O_RDWR;
        if (::open("/dev/null", mode) != number) ::_exit(storage);
    }
}

/// What the command line's own parser has to say: help, or what cannot be meant.
int tell(const CommandLine& line, const CLI::ParseError& error, bool isJson)
{
    if (error.get_exit_code() == 0) return line.app.exit(error);
    auto reason = std::string(error.what());
    if (!reason.ends_with('.')) reason += '.';
    report(Output(isJson), Stop::usage(reason + " Run with --help for what there is.").failure());
    return usage;
}

int run(const CommandLine& line, const std::optional<std::string>& zoneFault)
{
    Workspace workspace(line.options);
    try {
        if (zoneFault) throw Stop::usage(*zoneFault);
        line.command(workspace);
        return workspace.status();
    } catch (const Stop& stop) {
        // Who interrupts knows why it ended, but not what the server made of it.
        if (!Interruption::signal() || stop.failure().isUncertain)
            report(workspace.out(), stop.failure());
        return stop.status();
    } catch (const std::exception& error) {
        workspace.out().failure(error.what(), {{"error", error.what()}});
        return refused;
    }
}

} // namespace

int main(int argc, char** argv)
try {
    fillClosedDescriptors();
    const auto zoneFault = takeTimeZone();
    Interruption::start();
    CommandLine line;
    auto status = int(done);
    try {
        line.app.parse(argc, argv);
        if (!line.command)
            throw CLI::RequiredError("Say what to do.", CLI::ExitCodes::RequiredError);
        status = run(line, zoneFault);
    } catch (const CLI::ParseError& error) {
        const auto isJson = std::any_of(
            argv, argv + argc, [](const std::string& word) { return word == "--json"; });
        status = tell(line, error, isJson);
    }
    if (!Output::flush()) {
        std::fputs("tessel: The output could not be written.\n", stderr);
        if (status == done || status == donePartly) status = storage;
    }
    return Interruption::signal() ? interrupted + Interruption::signal() : status;
} catch (const std::exception& error) {
    std::fprintf(stderr, "tessel: %s\n", error.what());
    return refused;
}
