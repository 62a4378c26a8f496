#include "krohost/cli/shell/fishCompletion.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

namespace krohost::cli {

namespace {

std::string quoted(const std::string& text) {
    std::string result = "'";
    for (const char character : text) {
        if (character == '\'' || character == '\\')
            result += '\\';
        result += character;
    }
    return result + "'";
}

std::string value(const OptionModel& option) {
    switch (option.kind) {
    case ValueKind::none:
        return "";
    case ValueKind::text:
        return " -x";
    case ValueKind::file:
        return " -r -F";
    case ValueKind::dataFile:
        return " -x -a '(__krohost_data_files)'";
    case ValueKind::choice:
        break;
    }
    return fmt::format(" -x -a '{}'", fmt::join(option.choices, " "));
}

std::string optionLine(const std::string& condition, const OptionModel& option) {
    std::string text = fmt::format("complete -c krohost -n '{}'", condition);
    for (const std::string& name : option.names)
        text += name.starts_with("--") ? " -l " + name.substr(2) : " -s " + name.substr(1);
    return text + value(option) + " -d " + quoted(option.description) + '\n';
}

std::string commandLines(const CommandModel& command) {
    const std::string condition = fmt::format("test (__krohost_command) = {}", command.name);
    std::string text;
    for (const OptionModel& option : command.options)
        text += optionLine(condition, option);
    for (const OptionModel& positional : command.positionals)
        text += fmt::format("complete -c krohost -n '{}'{}\n", condition, value(positional));
    return text;
}

/// Folders are offered with a slash at their end.
std::string dataFilesFunction(const CompletionModel& model) {
    return fmt::format("function __krohost_data_files\n    complete -C \"'' \"(commandline -ct) | "
                       "string match -r '^.*(?:{}|/)$'\nend\n\n",
                       model.extensions.empty() ? "" : fmt::format("\\.(?:{})", fmt::join(model.extensions, "|")));
}

} // namespace

std::string fishCompletion(const CompletionModel& model) {
    std::vector<std::string> names;
    for (const CommandModel& command : model.commands)
        names.push_back(command.name);
    std::string text = "# Completions of krohost for fish.\n\n" + dataFilesFunction(model);
    text += fmt::format("function __krohost_command\n    set -l words (commandline -opc)\n"
                        "    if contains -- \"$words[2]\" {}\n        echo $words[2]\n    else\n        echo {}\n"
                        "    end\nend\n\ncomplete -c krohost -f\n",
                        fmt::join(names, " "), names.front());
    const std::string first = "test (count (commandline -opc)) -eq 1";
    for (const CommandModel& command : model.commands)
        text +=
            fmt::format("complete -c krohost -n '{}' -a {} -d {}\n", first, command.name, quoted(command.description));
    for (const OptionModel& option : model.tool.options)
        text += optionLine(first, option);
    for (const CommandModel& command : model.commands)
        text += commandLines(command);
    text.pop_back();
    return text;
}

} // namespace krohost::cli
