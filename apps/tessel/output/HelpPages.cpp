#include "apps/tessel/output/HelpPages.h"

#include <functional>
#include <sstream>

namespace Tessel::App {

namespace {

using Visitor = std::function<void(const CLI::App&, const std::string& path)>;

/// Every command, the whole program first; `path` is "tessel event show".
void walk(const CLI::App& app, const std::string& path, const Visitor& visitor)
{
    visitor(app, path);
    for (const auto* each : app.get_subcommands({}))
        walk(*each, path + " " + each->get_name(), visitor);
}

std::vector<const CLI::Option*> options(const CLI::App& app, bool arePositional)
{
    std::vector<const CLI::Option*> found;
    for (const auto* each : app.get_options()) {
        const bool isPositional = each->get_positional();
        if (isPositional == arePositional) found.push_back(each);
    }
    return found;
}

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

std::string names(const CLI::Option& option)
{
    std::string all;
    for (const auto& name : option.get_snames())
        all += (all.empty() ? "-" : ", -") + name;
    for (const auto& name : option.get_lnames())
        all += (all.empty() ? "--" : ", --") + name;
    const bool takesValue = option.get_items_expected_max() > 0 && !option.get_type_name().empty();
    return takesValue ? all + " " + option.get_type_name() : all;
}

void describe(std::ostream& page, const CLI::App& app)
{
    for (const bool arePositional : {true, false}) {
        for (const auto* option : options(app, arePositional)) {
            const auto name = arePositional ? option->get_name(true) : names(*option);
            page << ".TP\n.B " << forTroff(name) << "\n" << forTroff(option->get_description());
            page << "\n";
        }
    }
}

std::string usage(const CLI::App& app, const std::string& path)
{
    auto line = path;
    if (!options(app, false).empty()) line += " [OPTIONS]";
    for (const auto* each : options(app, true)) {
        auto name = each->get_name(true);
        if (each->get_items_expected_max() > 1) name += "...";
        line += each->get_required() ? " " + name : " [" + name + "]";
    }
    return line;
}

/// What may follow a command's words.
std::string words(const CLI::App& app)
{
    std::string all;
    const auto add = [&](const std::string& word) { all += (all.empty() ? "" : " ") + word; };
    for (const auto* each : app.get_subcommands({}))
        add(each->get_name());
    for (const auto* each : options(app, false)) {
        for (const auto& name : each->get_lnames())
            add("--" + name);
    }
    return all;
}

bool takesFiles(const CLI::Option& option)
{
    return option.get_type_name().starts_with("FILE") || option.get_name(true) == "FILE";
}

} // namespace

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

std::string bashCompletion(const CLI::App& app)
{
    std::ostringstream script;
    script << "# Completion of tessel for bash, in words that zsh understands.\n_tessel()\n{\n"
           << "    local current=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD - 1]}\n"
           << "    local at=tessel choices= word i\n    COMPREPLY=()\n"
           << "    for ((i = 1; i < COMP_CWORD; i++)); do\n"
           << "        word=${COMP_WORDS[i]}\n"
           << "        case \"$at $word\" in\n";
    std::string files;
    walk(app, "tessel", [&](const CLI::App& command, const std::string& path) {
        if (path != "tessel") script << "            '" << path << "') at+=\" $word\" ;;\n";
        for (const auto* each : options(command, false)) {
            for (const auto& name : each->get_lnames()) {
                if (takesFiles(*each) && files.find("--" + name) == files.npos)
                    files += (files.empty() ? "--" : "|--") + name;
            }
        }
    });
    script << "        esac\n    done\n"
           << "    case $previous in " << files << ") return ;; esac\n"
           << "    case $at in\n";
    const auto everywhere = words(app).substr(words(app).find("--"));
    walk(app, "tessel", [&](const CLI::App& command, const std::string& path) {
        script << "        '" << path << "') choices='" << words(command);
        if (path != "tessel") script << " " << everywhere;
        script << "' ;;\n";
    });
    script << "    esac\n    for word in $choices; do\n"
           << "        [[ $word == \"$current\"* ]] && COMPREPLY+=(\"$word\")\n"
           << "    done\n}\n"
           // Where nothing fits, files do.
           << "complete -o default -F _tessel tessel\n";
    return script.str();
}

std::string zshCompletion(const CLI::App& app)
{
    // What `complete` says counts from the next time on.
    return "#compdef tessel\nautoload -Uz bashcompinit && bashcompinit\n" + bashCompletion(app)
        + "_bash_complete -o default -F _tessel\n";
}

} // namespace Tessel::App
