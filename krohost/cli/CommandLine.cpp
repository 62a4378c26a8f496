#include "krohost/cli/CommandLine.h"

#include "krohost/cli/commands/addons.h"
#include "krohost/cli/commands/bench.h"
#include "krohost/cli/commands/check.h"
#include "krohost/cli/commands/completion.h"
#include "krohost/cli/commands/convert.h"
#include "krohost/cli/commands/diff.h"
#include "krohost/cli/commands/info.h"
#include "krohost/cli/commands/trace.h"
#include "krohost/cli/report/jsonReport.h"
#include "krohost/cli/shell/manPage.h"
#include "krohost/cli/terminal/Console.h"
#include "krohost/text/suggest.h"

#include <CLI/CLI.hpp>
#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <sstream>

namespace krohost::cli {

namespace {

struct CommandEntry {
    Command command;
    const char* name;
    const char* summary;
    void (*addOptions)(CLI::App& command, CommandLine& line);
    const char* examples; ///< command lines that work, each with what it does
};

constexpr std::array commands{
    CommandEntry{Command::info, "info", "Show zones and variables (the default)", addInfoOptions,
                 "  krohost wing.vtu                          what the file holds\n"
                 "  krohost info --demand wing.vtu            with the range and checksum of all values\n"
                 "  krohost info --json wing.vtu              the same for programs\n"
                 "  krohost 'step*.vtu'                       a time series\n"
                 "  krohost --record layout.json run.pvd      keeps how it was loaded, for replay\n"},
    CommandEntry{Command::replay, "replay", "The same for a load that --record has written", addReplayOptions,
                 "  krohost replay layout.json                loads once more what was recorded\n"
                 "  krohost replay --demand layout.json --append wing.vtu\n"},
    CommandEntry{Command::trace, "trace", "Print every call between host and add-on", addTraceOptions,
                 "  krohost trace wing.vtu                    the calls of a load\n"
                 "  krohost trace --only KroUtilDataSet --only KroUtilVar wing.vtu\n"
                 "  krohost trace --demand --jsonl wing.vtu   one JSON object a call\n"},
    CommandEntry{Command::bench, "bench", "Load every variable and node map, keep them, and show what it took",
                 addBenchOptions,
                 "  krohost bench -j 4 run.pvd                with four threads\n"
                 "  krohost bench --json --variable pressure wing.vtu\n"},
    CommandEntry{Command::dump, "dump", "Write the values of variables, or a node map", addDumpOptions,
                 "  krohost dump wing.vtu --variable pressure --range :5\n"
                 "  krohost dump wing.vtu --variable X --variable Y --format csv -o xy.csv\n"
                 "  krohost dump wing.vtu --node-map --format npy -o nodes.npy\n"},
    CommandEntry{Command::diff, "diff", "Compare two datasets, A and B", addDiffOptions,
                 "  krohost diff step1.vtu step2.vtu          ends with 5 when they differ\n"
                 "  krohost diff --rtol 1e-6 step1.vtu step2.vtu\n"},
    CommandEntry{Command::check, "check", "Load everything in each file and list what is wrong with it",
                 addCheckOptions,
                 "  krohost check wing.vtu                    whether everything loads\n"
                 "  krohost check --deep --explain wing.vtu   and what is wrong where in the file\n"
                 "  krohost check --json 'step*.vtu'\n"},
    CommandEntry{Command::convert, "convert", "Write what was loaded as .vtu, .vtm, .pvd, .vtkhdf, .cgns or .csv",
                 addConvertOptions,
                 "  krohost convert wing.vtu -o wing.cgns\n"
                 "  krohost convert 'step*.vtu' -o all.pvd    a file for each zone, and one that names them\n"
                 "  krohost convert --repair lz4.vtu -o zlib.vtu\n"},
    CommandEntry{Command::addons, "addons", "Show the add-on and the loaders that it brings", addAddOnsOptions,
                 "  krohost addons                            which files can be loaded\n"
                 "  krohost addons --json\n"},
};

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
    for (const CommandEntry& entry : commands)
        names.push_back(entry.name);
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

void addCommands(CLI::App& app, CommandLine& line) {
    app.require_subcommand(1);
    app.set_version_flag("--version", "krohost " KROHOST_VERSION);
    app.footer(std::string{"Examples:\n"} + commands.front().examples +
               "\nkrohost COMMAND --help shows the options and more examples of a command.\n" + exitCodes);
    for (const CommandEntry& entry : commands) {
        CLI::App* command = app.add_subcommand(entry.name, entry.summary);
        entry.addOptions(*command, line);
        command->footer(std::string{"Examples:\n"} + entry.examples + exitCodes);
    }
}

void setCommand(const CLI::App& app, CommandLine& line) {
    for (const CommandEntry& entry : commands)
        if (app.got_subcommand(entry.name))
            line.command = entry.command;
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
int finishUsage(const CLI::App& app, const CLI::ParseError& error, CommandLine& line,
                const std::vector<std::string>& arguments) {
    const Console console{line};
    std::ostringstream output, errors;
    if (app.exit(error, output, errors) == 0)
        return console.print(output.str(), Exit_Done);
    setCommand(app, line);
    const auto has = [&](const char* option) {
        return std::find(arguments.begin(), arguments.end(), option) != arguments.end();
    };
    line.isJson = has("--json");
    line.isJsonLines = has("--jsonl");
    console.error(error.what());
    console.hint(optionHint(app) + "Run with --help for more information.");
    return console.print(failureText(line, error.what()), Exit_Usage);
}

} // namespace

std::variant<CommandLine, int> parseCommandLine(int argumentCount, const char* const* arguments) {
    CommandLine line;
    const std::vector<std::string> words(arguments + 1, arguments + argumentCount);
    CLI::App app{"Loads files through a data-loader add-on and shows what it makes of them", "krohost"};
    addCommands(app, line);
    addCompletionCommand(app);
    addManPageOption(app);
    try {
        app.parse(completedArguments(words));
    } catch (const CLI::ParseError& error) {
        return finishUsage(app, error, line, words);
    }
    setCommand(app, line);
    return line;
}

} // namespace krohost::cli
