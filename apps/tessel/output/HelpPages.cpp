#include "apps/tessel/output/HelpPages.h"

#include "apps/tessel/output/CommandTree.h"
#include "apps/tessel/output/Wording.h"

#include <sstream>

namespace Tessel::App {

namespace {

/// Text for troff, in which a backslash, and a dot or quote that begins a line, mean something.
std::string forTroff(const std::string& text)
{
    std::string out;
    for (const char c : text) {
        if (out.empty() || out.back() == '\n') {
            if (c == '.' || c == '\'') out += "\\&";
        }
        if (c == '\\') {
            out += "\\e";
        } else if (c == '-') {
            out += "\\-";
        } else {
            out += c;
        }
    }
    return out;
}

/// "-h, --help", "--timeout SECONDS", "CALENDAR".
std::string spelling(const CLI::Option& option)
{
    if (option.get_positional()) return option.get_name(true);
    std::vector<std::string> all;
    for (const auto& name : option.get_snames())
        all.push_back("-" + name);
    for (const auto& name : option.get_lnames())
        all.push_back("--" + name);
    const auto value = valueOf(option);
    return joined(all) + (value.empty() ? "" : " " + value);
}

class HelpFormatter final : public CLI::Formatter {
public:
    std::string make_option_name(const CLI::Option* option, bool) const override
    {
        return spelling(*option);
    }
    /// The usage shows what is required, the descriptions say the rest.
    std::string make_option_opts(const CLI::Option*) const override { return {}; }
};

void describe(std::ostream& page, const CLI::App& app)
{
    for (const bool arePositional : {true, false}) {
        for (const auto* option : optionsOf(app, arePositional))
            page << ".TP\n.B " << forTroff(spelling(*option)) << "\n"
                 << forTroff(option->get_description()) << "\n";
    }
}

std::string usage(const CLI::App& app, const std::string& path)
{
    auto line = path;
    if (!optionsOf(app, false).empty()) line += " [OPTIONS]";
    for (const auto* each : optionsOf(app, true)) {
        auto name = each->get_name(true);
        if (each->get_items_expected_max() > 1) name += "...";
        line += each->get_required() ? " " + name : " [" + name + "]";
    }
    return line;
}

} // namespace

std::shared_ptr<CLI::FormatterBase> helpFormatter()
{
    return std::make_shared<HelpFormatter>();
}

std::string manualPage(const CLI::App& app, const std::string& version)
{
    std::ostringstream page;
    page << ".TH TESSEL 1 \"\" \"tessel " << version << "\" \"User Commands\"\n"
         << ".SH NAME\ntessel \\- calendars on CalDAV servers\n"
         << ".SH SYNOPSIS\n.B tessel\n[OPTIONS] COMMAND ...\n"
         << ".SH DESCRIPTION\n"
         << forTroff(app.get_description()) << "\n.SH OPTIONS\n"
         << "These are understood by every command.\n";
    describe(page, app);
    page << ".SH COMMANDS\n";
    for (const auto* top : app.get_subcommands({})) {
        walk(*top, "tessel " + top->get_name(), [&](const CLI::App& command, const auto& path) {
            page << ".SS \"" << forTroff(usage(command, path)) << "\"\n"
                 << forTroff(command.get_description()) << ".\n";
            describe(page, command);
            page << ".PP\n.nf\n" << forTroff(command.get_footer()) << "\n.fi\n";
        });
    }
    page << ".SH NOTES\n.nf\n" << forTroff(app.get_footer()) << "\n.fi\n";
    return page.str();
}

} // namespace Tessel::App
