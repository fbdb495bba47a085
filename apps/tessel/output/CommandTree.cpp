#include "apps/tessel/output/CommandTree.h"

namespace Tessel::App {

void walk(const CLI::App& app, const std::string& path, const CommandVisitor& visitor)
{
    visitor(app, path);
    for (const auto* each : app.get_subcommands({}))
        walk(*each, path + " " + each->get_name(), visitor);
}

std::vector<const CLI::Option*> optionsOf(const CLI::App& app, bool arePositional)
{
    std::vector<const CLI::Option*> found;
    for (const auto* each : app.get_options()) {
        const bool isPositional = each->get_positional();
        if (isPositional == arePositional) found.push_back(each);
    }
    return found;
}

std::string valueOf(const CLI::Option& option)
{
    // The parser adds what it tells of its checks, behind a colon.
    const auto type = option.get_type_name();
    return option.get_items_expected_max() > 0 ? type.substr(0, type.find(':')) : "";
}

} // namespace Tessel::App
