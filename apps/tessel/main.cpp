#include "apps/tessel/Commands.h"

#include <cstdlib>

using namespace Tessel::App;

namespace {

constexpr int usageError = 2;

void addOptions(CLI::App& app, Options& options)
{
    app.add_option("--server", options.server, "host name and port, or URL")->required();
    app.add_option("--allow", options.otherServers,
        "another server that may be given the password, such as one that --server redirects to");
    app.add_option("--user", options.user)->required();
    app.add_option("--email", options.email, "your address, if it is not the user name");
    app.add_option("--ca-file", options.authorityFile, "PEM file of authorities to trust");
    app.add_option("--store", options.storeFile, "SQLite file of what you hold")
        ->default_str("$XDG_DATA_HOME/tessel/store.sqlite");
    app.add_option("--timeout", options.timeoutSeconds, "seconds for the whole command")
        ->check(CLI::Range(1, 86'400))
        ->capture_default_str();
    app.add_flag("--json", options.json, "one JSON object a line");
    app.add_flag("--verbose", options.verbose, "log to standard error what the library does");
}

int run(const Options& options, const Command& command)
{
    const Output output(options.json);
    try {
        const auto network = std::make_shared<Tessel::MCurlNetworkManager>(
            Tessel::MNetworkConfiguration {.authorityFile = options.authorityFile});
        Host host(options, readPassword(), network);
        command(host);
        return EXIT_SUCCESS;
    } catch (const StepFailed& failed) {
        output.failure(failed.what(),
            {{"error", std::string(failed.what())}, {"step", failed.step},
                {"answer", Output::orNull(failed.lastWord)}});
    } catch (const std::exception& failed) {
        output.failure(failed.what(), {{"error", std::string(failed.what())}});
    }
    return EXIT_FAILURE;
}

} // namespace

int main(int argc, char** argv)
{
    CLI::App app(
        "A command-line host of calendar accounts. The password is taken from the variable "
        "TESSEL_PASSWORD, or from standard input.");
    Options options;
    Command command;
    addOptions(app, options);
    app.require_subcommand(1)->fallthrough();
    addDiscoverCommand(app, command);
    addCalendarCommands(app, command);
    addSyncCommand(app, command);
    addEventCommands(app, command);
    addSharingCommands(app, command);
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        return app.exit(error) == EXIT_SUCCESS ? EXIT_SUCCESS : usageError;
    }
    if (options.storeFile.empty()) options.storeFile = defaultStoreFile();
    return run(options, command);
}
