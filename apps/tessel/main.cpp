#include "apps/tessel/commands/CommandLine.h"

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

/// One version of an event that two have changed, on a line.
std::string summaryOf(const std::string& text)
{
    if (text.empty()) return "removed";
    const auto event = EventText::read(text);
    if (!event) return "cannot be read";
    std::string line;
    const auto main = event.value().main();
    for (const auto* name : {"SUMMARY", "DTSTART", "DTEND", "LOCATION", "DESCRIPTION"}) {
        if (const auto property = main.component().line(name))
            line += (line.empty() ? "" : "; ") + property->unfolded();
    }
    return line;
}

void report(const Output& out, const Failure& failure)
{
    out.failure(reasonOf(failure), describe(failure));
    if (!failure.texts || out.isJson()) return;
    out.note("  yours: " + summaryOf(failure.texts->mine));
    out.note("  theirs: " + summaryOf(failure.texts->theirs));
}

int run(const CommandLine& line)
{
    Workspace workspace(line.options);
    try {
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
    Interruption::start();
    CommandLine line;
    try {
        line.app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        return line.app.exit(error) == 0 ? done : usage;
    }
    if (!line.command) {
        std::fputs("tessel: Say what to do. Run with --help for what there is.\n", stderr);
        return usage;
    }
    auto status = run(line);
    if (!Output::flush()) {
        std::fputs("tessel: The output could not be written.\n", stderr);
        if (status == done || status == donePartly) status = storage;
    }
    return Interruption::signal() ? interrupted + Interruption::signal() : status;
} catch (const std::exception& error) {
    std::fprintf(stderr, "tessel: %s\n", error.what());
    return refused;
}
