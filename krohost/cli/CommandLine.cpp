#include "krohost/cli/CommandLine.h"

#include "krohost/cli/commands/completion.h"
#include "krohost/cli/commands/table.h"
#include "krohost/cli/shell/manPage.h"
#include "krohost/cli/terminal/Failure.h"
#include "krohost/text/suggest.h"

#include <CLI/CLI.hpp>
#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <sstream>

namespace krohost::cli {

namespace {

constexpr const char* exitCodes = "\nExit codes:\n"
                                  "    0  done\n"
                                  "    1  the load or a demand failed, or the results cannot be written\n"
                                  "    2  the command line is wrong\n"
                                  "    3  a named file cannot be opened\n"
                                  "    4  the add-on cannot be loaded\n"
                                  "    5  what was compared differs\n"
                                  "  130  interrupted (129, 143: by SIGHUP, SIGTERM)\n"
                                  "  141  nobody reads the output any more\n";

std::vector<std::string> commandNames() {
    std::vector<std::string> names;
    for (const CommandEntry* entry : commandTable)
        names.push_back(entry->name);
    return names;
}

/// Whether a first argument that is no command was meant to be one.
std::optional<std::string> misspeltCommand(const std::string& argument) {
    std::error_code ignored;
    const bool isFileName = argument.find_first_of("./*?[") != argument.npos || argument.starts_with('-') ||
                            std::filesystem::exists(argument, ignored);
    return isFileName ? std::nullopt : nearestName(argument, commandNames());
}

/// The arguments with the command that a bare list of files leaves out, last one first as the parser takes them.
std::vector<std::string> completedArguments(std::vector<std::string> arguments) {
    if (arguments.empty())
        throw CLI::RequiredError("A file or a command");
    if (arguments.front() == "help") { // and perhaps of which command
        std::rotate(arguments.begin(), arguments.begin() + 1, arguments.end());
        arguments.back() = "--help";
    }
    std::vector<std::string> complete = commandNames();
    complete.insert(complete.end(), {"completion", "-h", "--help", "--version", "--man"});
    if (std::find(complete.begin(), complete.end(), arguments.front()) == complete.end()) {
        if (const auto meant = misspeltCommand(arguments.front()))
            throw CLI::ArgumentMismatch(
                fmt::format("There is no command or file \"{}\"; did you mean krohost {}?", arguments.front(), *meant));
        arguments.insert(arguments.begin(), "info");
    }
    std::reverse(arguments.begin(), arguments.end());
    return arguments;
}

using Commands = std::vector<std::unique_ptr<Command>>; ///< as in the table

Commands addCommands(CLI::App& app) {
    app.require_subcommand(1);
    app.set_version_flag("--version", "krohost " KROHOST_VERSION);
    app.footer(std::string{"Examples:\n"} + commandTable.front()->examples +
               "\nkrohost COMMAND --help shows the options and more examples of a command.\n" + exitCodes);
    Commands commands;
    for (const CommandEntry* entry : commandTable) {
        CLI::App* command = app.add_subcommand(entry->name, entry->summary);
        commands.push_back(entry->make(*command));
        command->footer(std::string{"Examples:\n"} + entry->examples + exitCodes);
    }
    return commands;
}

/// The default where the user has named none.
std::unique_ptr<Command> chosenCommand(const CLI::App& app, Commands& commands) {
    for (std::size_t index = 0; index < commands.size(); ++index)
        if (app.got_subcommand(commandTable[index]->name))
            return std::move(commands[index]);
    return std::move(commands.front());
}

/// `Did you mean --demand?` for the first option that the command does not have.
std::string optionHint(const CLI::App& app) {
    const std::vector<CLI::App*> parsed = app.get_subcommands();
    if (parsed.empty())
        return {};
    std::vector<std::string> names;
    for (const CLI::Option* option : parsed.front()->get_options())
        for (const std::string& name : option->get_lnames())
            names.push_back("--" + name);
    for (const std::string& argument : app.remaining(true))
        if (argument.starts_with("--"))
            if (const auto nearest = nearestName(argument.substr(0, argument.find('=')), names))
                return fmt::format("Did you mean {}?\n", *nearest);
    return {};
}

/// Prints what a command line that is not to be run asks for, or what is wrong with it.
int finishUsage(const CLI::App& app, const CLI::ParseError& error, Command& command,
                const std::vector<std::string>& arguments) {
    const Console console{command.output};
    std::ostringstream output, errors;
    if (app.exit(error, output, errors) == 0)
        return console.print(output.str(), Exit_Done);
    const auto has = [&](const char* option) {
        return std::find(arguments.begin(), arguments.end(), option) != arguments.end();
    };
    command.output.form = has("--jsonl") ? Form::jsonLines : has("--json") ? Form::json : Form::text;
    console.error(error.what());
    console.hint(optionHint(app) + "Run with --help for more information.");
    return console.print(failureText(command, error.what()), Exit_Usage);
}

} // namespace

std::variant<std::unique_ptr<Command>, int> parseCommandLine(int argumentCount, const char* const* arguments) {
    const std::vector<std::string> words(arguments + 1, arguments + argumentCount);
    CLI::App app{"Loads files through a data-loader add-on and shows what it makes of them", "krohost"};
    Commands commands = addCommands(app);
    addCompletionCommand(app);
    addManPageOption(app);
    try {
        app.parse(completedArguments(words));
    } catch (const CLI::ParseError& error) {
        return finishUsage(app, error, *chosenCommand(app, commands), words);
    }
    return chosenCommand(app, commands);
}

} // namespace krohost::cli
