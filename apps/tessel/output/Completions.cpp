#include "apps/tessel/output/Completions.h"

#include "apps/tessel/output/CommandTree.h"

#include <set>
#include <sstream>

namespace Tessel::App {

namespace {

/// What may follow a command's words, with its description.
using Choices = std::vector<std::pair<std::string, std::string>>;

Choices commandChoices(const CLI::App& app)
{
    Choices choices;
    for (const auto* each : app.get_subcommands({}))
        choices.emplace_back(each->get_name(), each->get_description());
    return choices;
}

Choices optionChoices(const CLI::App& app)
{
    Choices choices;
    for (const auto* each : optionsOf(app, false)) {
        for (const auto& name : each->get_lnames())
            choices.emplace_back("--" + name, each->get_description());
    }
    return choices;
}

/// Patterns of a shell: the commands with all their words, and the options that a file follows.
std::string commandPattern(const CLI::App& app)
{
    std::string pattern;
    walk(app, "tessel", [&](const CLI::App& command, const std::string& path) {
        if (&command != &app) pattern += (pattern.empty() ? "'" : "|'") + path + "'";
    });
    return pattern;
}

std::string filePattern(const CLI::App& app)
{
    std::set<std::string> names;
    walk(app, "tessel", [&](const CLI::App& command, const std::string&) {
        for (const auto* each : optionsOf(command, false)) {
            if (valueOf(*each) != "FILE") continue;
            for (const auto& name : each->get_lnames())
                names.insert("--" + name);
        }
    });
    std::string pattern;
    for (const auto& name : names)
        pattern += (pattern.empty() ? "" : "|") + name;
    return pattern;
}

std::string forBash(const Choices& choices)
{
    std::string words;
    for (const auto& [word, description] : choices)
        words += " " + word;
    return words;
}

/// As `_describe` takes them: each within single quotes, and a backslash means something.
std::string forZsh(const Choices& choices)
{
    std::string words;
    for (const auto& [word, description] : choices) {
        words += " '" + word + ":";
        for (const char c : description)
            words += c == '\'' ? "'\\''" : c == '\\' ? "\\\\" : std::string(1, c);
        words += "'";
    }
    return words;
}

} // namespace

std::string bashCompletion(const CLI::App& app)
{
    std::ostringstream script;
    script << "# Completion of tessel for bash.\n_tessel()\n{\n"
           << "    local current=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD - 1]}\n"
           << "    local at=tessel choices= word\n"
           << "    for word in \"${COMP_WORDS[@]:1:COMP_CWORD-1}\"; do\n"
           << "        case \"$at $word\" in " << commandPattern(app)
           << ") at+=\" $word\" ;; esac\n"
           << "    done\n    COMPREPLY=()\n"
           << "    case $previous in " << filePattern(app) << ") return ;; esac\n"
           << "    case $at in\n";
    walk(app, "tessel", [&](const CLI::App& command, const std::string& path) {
        script << "        '" << path << "') choices='" << forBash(commandChoices(command));
        if (&command != &app) script << forBash(optionChoices(command));
        script << "' ;;\n";
    });
    script << "    esac\n    for word in $choices" << forBash(optionChoices(app)) << "; do\n"
           << "        [[ $word == \"$current\"* ]] && COMPREPLY+=(\"$word\")\n"
           << "    done\n}\n"
           // Where nothing fits, files do.
           << "complete -o default -F _tessel tessel\n";
    return script.str();
}

std::string zshCompletion(const CLI::App& app)
{
    std::ostringstream script;
    script << "#compdef tessel\n# Completion of tessel for zsh.\n"
           << "local at=tessel word\nlocal -a commands\nlocal -aU options\n"
           << "for word in ${words[2,CURRENT-1]}; do\n"
           << "    case \"$at $word\" in " << commandPattern(app) << ") at+=\" $word\" ;; esac\n"
           << "done\n"
           << "case ${words[CURRENT-1]} in " << filePattern(app) << ") _files; return ;; esac\n"
           << "case $at in\n";
    walk(app, "tessel", [&](const CLI::App& command, const std::string& path) {
        script << "    '" << path << "')\n        commands=(" << forZsh(commandChoices(command))
               << ")\n";
        if (&command != &app)
            script << "        options=(" << forZsh(optionChoices(command)) << ")\n";
        script << "        ;;\n";
    });
    script << "esac\noptions+=(" << forZsh(optionChoices(app)) << ")\n"
           << "_describe -t commands command commands || _describe -o option options || _files\n";
    return script.str();
}

} // namespace Tessel::App
