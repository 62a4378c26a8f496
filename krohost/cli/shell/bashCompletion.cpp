#include "krohost/cli/shell/bashCompletion.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

namespace krohost::cli {

namespace {

constexpr const char* functions = R"(
_krohost_words() { # in any letter case
    local word
    for word in $1; do
        [[ ${word,,} == "${current,,}"* ]] && COMPREPLY+=("$word")
    done
}

_krohost_files() { # those with an extension of $1, and folders
    local extension
    compopt -o filenames 2>/dev/null
    for extension in $1; do
        mapfile -t -O ${#COMPREPLY[@]} COMPREPLY < <(compgen -f -X "!*.$extension" -- "$current")
    done
    mapfile -t -O ${#COMPREPLY[@]} COMPREPLY < <(compgen -d -- "$current")
}

_krohost() {
    local current=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD - 1]}
    local command=${COMP_WORDS[1]} options=
    COMPREPLY=()
    # An equals sign is a word of its own.
    [[ $previous == = ]] && previous=${COMP_WORDS[COMP_CWORD - 2]}
    [[ $current == = ]] && current=
)";

std::string names(const std::vector<OptionModel>& options) {
    std::vector<std::string> all;
    for (const OptionModel& option : options)
        all.insert(all.end(), option.names.begin(), option.names.end());
    return fmt::format("{}", fmt::join(all, " "));
}

/// What completes a value of this kind; nothing leaves it to the shell.
std::string action(const OptionModel& option, const CompletionModel& model) {
    if (option.kind == ValueKind::choice)
        return fmt::format("_krohost_words '{}'", fmt::join(option.choices, " "));
    if (option.kind == ValueKind::dataFile && !model.extensions.empty())
        return fmt::format("_krohost_files '{}'", fmt::join(model.extensions, " "));
    return ":";
}

std::string commandCase(const CommandModel& command, const CompletionModel& model) {
    std::string text = fmt::format("    {})\n        case $previous in\n", command.name);
    for (const OptionModel& option : command.options)
        if (option.kind != ValueKind::none)
            text += fmt::format("        {}) {}; return ;;\n", fmt::join(option.names, " | "), action(option, model));
    text += fmt::format("        esac\n        options='{}'\n", names(command.options));
    if (!command.positionals.empty())
        text += fmt::format("        [[ $current == -* ]] || {}\n", action(command.positionals.front(), model));
    return text + "        ;;\n";
}

} // namespace

std::string bashCompletion(const CompletionModel& model) {
    std::vector<std::string> commandNames;
    for (const CommandModel& command : model.commands)
        commandNames.push_back(command.name);
    std::string text = "# Completions of krohost for bash.\n";
    text += functions;
    text += fmt::format("    case $command in\n    {}) ;;\n    *) command={} ;;\n    esac\n",
                        fmt::join(commandNames, " | "), commandNames.front());
    text += "    case $command in\n";
    for (const CommandModel& command : model.commands)
        text += commandCase(command, model);
    text += fmt::format("    esac\n    ((COMP_CWORD == 1)) && options+=' {}'\n", names(model.tool.options));
    text += "    [[ $current == -* ]] && _krohost_words \"$options\"\n";
    text += fmt::format("    ((COMP_CWORD == 1)) && _krohost_words '{}'\n}}\n\n", fmt::join(commandNames, " "));
    return text + "complete -o bashdefault -o default -F _krohost krohost";
}

} // namespace krohost::cli
