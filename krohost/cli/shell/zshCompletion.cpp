#include "krohost/cli/shell/zshCompletion.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>

namespace krohost::cli {

namespace {

std::string quoted(const std::string& text) {
    std::string result = "'";
    for (const char character : text)
        result += character == '\'' ? "'\\''" : std::string(1, character);
    return result + "'";
}

std::string withoutBrackets(std::string text) {
    std::replace(text.begin(), text.end(), '[', '(');
    std::replace(text.begin(), text.end(), ']', ')');
    return text;
}

/// What completes a value.
std::string action(const OptionModel& option, const CompletionModel& model) {
    if (option.kind == ValueKind::choice)
        return fmt::format("({})", fmt::join(option.choices, " "));
    if (option.kind == ValueKind::text)
        return " ";
    if (option.kind == ValueKind::dataFile && !model.extensions.empty())
        return fmt::format("_files -g \"*.({})(-.)\"", fmt::join(model.extensions, "|"));
    return "_files";
}

/// The end of an entry: what stands for the value, and what completes it.
std::string value(const OptionModel& option, const CompletionModel& model) {
    std::string valueName = option.valueName;
    std::replace(valueName.begin(), valueName.end(), ':', ' ');
    return option.kind == ValueKind::none ? "" : fmt::format(":{}:{}", valueName, action(option, model));
}

/// One entry for each name, which excludes the others unless the option may be repeated.
std::vector<std::string> optionEntries(const OptionModel& option, const CompletionModel& model) {
    std::vector<std::string> entries;
    for (const std::string& name : option.names) {
        const char* separator = option.kind == ValueKind::none ? "" : name.starts_with("--") ? "=" : "+";
        const std::string before = option.takesSeveral ? "*" : fmt::format("({})", fmt::join(option.names, " "));
        entries.push_back(quoted(fmt::format("{}{}{}[{}]{}", before, name, separator,
                                             withoutBrackets(option.description), value(option, model))));
    }
    return entries;
}

std::string commandCase(const CommandModel& command, const CompletionModel& model) {
    std::vector<std::string> entries{"$tool"};
    for (const OptionModel& option : command.options)
        for (std::string& entry : optionEntries(option, model))
            entries.push_back(std::move(entry));
    for (const OptionModel& positional : command.positionals)
        entries.push_back(quoted((positional.takesSeveral ? "*" : "") + value(positional, model)));
    return fmt::format("    {})\n        _arguments -s -S : {}\n        ;;\n", command.name,
                       fmt::join(entries, " \\\n            "));
}

} // namespace

std::string zshCompletion(const CompletionModel& model) {
    std::vector<std::string> names, descriptions, toolOptions;
    for (const CommandModel& command : model.commands) {
        names.push_back(command.name);
        descriptions.push_back(quoted(command.name + ":" + command.description));
    }
    for (const OptionModel& option : model.tool.options)
        for (std::string& entry : optionEntries(option, model))
            toolOptions.push_back(std::move(entry));
    std::string text = "#compdef krohost\n# Completions of krohost for zsh.\n\n_krohost() {\n";
    text += fmt::format("    local command={}\n    local -a commands=(\n        {})\n    local -a tool=()\n",
                        names.front(), fmt::join(descriptions, "\n        "));
    text += fmt::format("    if ((CURRENT == 2)); then\n        [[ $words[2] == -* ]] || _describe command commands\n"
                        "        tool=({})\n    else\n        case $words[2] in\n        {})\n"
                        "            command=$words[2]\n            shift words\n            ((CURRENT--))\n"
                        "            ;;\n        esac\n    fi\n    case $command in\n",
                        fmt::join(toolOptions, " "), fmt::join(names, " | "));
    for (const CommandModel& command : model.commands)
        text += commandCase(command, model);
    return text + "    esac\n}\n\n"
                  "# Read by the completion system as the function's body, or sourced.\n"
                  "if [[ $funcstack[1] == _krohost ]]; then _krohost \"$@\"; else compdef _krohost krohost; fi";
}

} // namespace krohost::cli
