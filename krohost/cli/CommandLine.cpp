#include "krohost/cli/CommandLine.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <array>
#include <iterator>
#include <thread>

namespace krohost::cli {

namespace {

/// The arguments behind the program's name, last one first as the parser takes them, with the command that a bare list
/// of files leaves out.
std::vector<std::string> completedArguments(int argumentCount, const char* const* arguments) {
    constexpr std::array<std::string_view, 4> complete{"info", "trace", "-h", "--help"};
    std::vector<std::string> result(arguments + 1, arguments + argumentCount);
    if (!result.empty() && std::find(complete.begin(), complete.end(), result.front()) == complete.end())
        result.insert(result.begin(), "info");
    std::reverse(result.begin(), result.end());
    return result;
}

void addLoadOptions(CLI::App& command, CommandLine& line) {
    command.add_option("FILE", line.files, "Files to load")->required();
    command.add_flag("--demand", line.isDemanding, "Load every variable and node map");
    command.add_option("-j,--jobs", line.threadCount, "Threads that load on demand (default: one per core)")
        ->check(CLI::Range(1, 1024));
    command.add_option("--node-bits", line.nodeBitCount, "Width of stored node numbers (default: as needed)")
        ->check(CLI::IsMember({32, 64}));
    command.add_option("--addon", line.addOn, "The add-on's shared library");
}

} // namespace

std::variant<CommandLine, int> parseCommandLine(int argumentCount, const char* const* arguments) {
    CommandLine line;
    line.threadCount = std::max(1U, std::thread::hardware_concurrency());
    CLI::App app{"Loads files through a data-loader add-on and shows what it makes of them", "krohost"};
    app.require_subcommand(1);
    CLI::App* info = app.add_subcommand("info", "Show zones and variables (the default)");
    addLoadOptions(*info, line);
    info->add_flag("--json", line.isJson, "Print one JSON document");
    CLI::App* trace = app.add_subcommand("trace", "Print every call between host and add-on");
    addLoadOptions(*trace, line);
    trace->add_flag("--lists", line.isTracingLists, "Include the calls that build and read lists");
    try {
        app.parse(completedArguments(argumentCount, arguments));
    } catch (const CLI::ParseError& error) {
        return app.exit(error) == 0 ? Exit_Done : Exit_Usage;
    }
    line.command = trace->parsed() ? Command::trace : Command::info;
    return line;
}

} // namespace krohost::cli
