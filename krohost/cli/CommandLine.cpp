#include "krohost/cli/CommandLine.h"

#include "krohost/cli/series.h"

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
    constexpr std::array<std::string_view, 6> complete{"info", "replay", "trace", "bench", "-h", "--help"};
    std::vector<std::string> result(arguments + 1, arguments + argumentCount);
    if (!result.empty() && std::find(complete.begin(), complete.end(), result.front()) == complete.end())
        result.insert(result.begin(), "info");
    std::reverse(result.begin(), result.end());
    return result;
}

constexpr const char* filesHelp =
    "Files to load: data files, patterns in quotes ('step*.vtu'), time series (.pvd, .series)";

/// Where the solution times and strands of a new load come from; with any of these the files go through the loader's
/// instructions.
void addNewLoadOptions(CLI::App& command, CommandLine& line) {
    command.add_option("FILE", line.files, filesHelp)->required();
    command.add_option("--loader", line.loader, "Name of the loader (default: by extension)");
    command.add_option("--time-source", line.timeSource, "Where solution times come from, instead of a time series")
        ->transform(CLI::IsMember({"AUTO", "FROMFIELDDATA", "FROMFILENAME", "NONE"}, CLI::ignore_case));
    command.add_option("--times", line.times, "Solution times of the files, in their order")
        ->delimiter(',')
        ->allow_extra_args(false)
        ->check([](const std::string& text) { return parseTime(text) ? "" : text + " is not a time"; })
        ->type_name("T1,T2,...");
    command.add_option("--strand", line.strand,
                       "Strand of the files that --append adds (default: one above the highest), else of FILE");
}

void addHostOptions(CLI::App& command, CommandLine& line) {
    command.add_option("--node-bits", line.nodeBitCount, "Width of stored node numbers (default: as needed)")
        ->check(CLI::IsMember({32, 64}));
    command.add_option("--addon", line.addOn, "The add-on's shared library");
}

void addLoadOptions(CLI::App& command, CommandLine& line) {
    command.add_option("--append", line.appendedFiles, "Files to add to the dataset, as one strand");
    command.add_option("--record", line.recordFile, "Write how FILE was loaded, for krohost replay");
    command.add_flag("--demand", line.isDemanding, "Load every variable and node map");
    command.add_option("-j,--jobs", line.threadCount, "Threads that load on demand (default: one per core)")
        ->check(CLI::Range(1, 1024));
    addHostOptions(command, line);
}

void addBenchOptions(CLI::App& command, CommandLine& line) {
    command.add_flag("--json", line.isJson, "Print one JSON object on one line");
    command.add_option("-j,--jobs", line.threadCount, "Threads that load on demand (default: 1)")
        ->check(CLI::Range(1, 1024));
    command.add_option("--variable", line.variable, "Load this variable only, in every zone that has it");
    addHostOptions(command, line);
}

} // namespace

std::variant<CommandLine, int> parseCommandLine(int argumentCount, const char* const* arguments) {
    CommandLine line;
    line.threadCount = std::max(1U, std::thread::hardware_concurrency());
    CLI::App app{"Loads files through a data-loader add-on and shows what it makes of them", "krohost"};
    app.require_subcommand(1);
    CLI::App* info = app.add_subcommand("info", "Show zones and variables (the default)");
    addNewLoadOptions(*info, line);
    CLI::App* replay = app.add_subcommand("replay", "The same for a load that --record has written");
    replay->add_option("FILE", line.files, "The recorded load")->required()->expected(1);
    for (CLI::App* command : {info, replay}) {
        addLoadOptions(*command, line);
        command->add_flag("--json", line.isJson, "Print one JSON document");
    }
    replay
        ->add_option("--strand", line.strand, "Strand of the files that --append adds (default: one above the highest)")
        ->needs("--append");
    CLI::App* trace = app.add_subcommand("trace", "Print every call between host and add-on");
    addNewLoadOptions(*trace, line);
    addLoadOptions(*trace, line);
    trace->add_flag("--lists", line.isTracingLists, "Include the calls that build and read lists");
    CLI::App* bench = app.add_subcommand("bench", "Load every variable and node map, keep them, and show what it took");
    addNewLoadOptions(*bench, line);
    addBenchOptions(*bench, line);
    try {
        app.parse(completedArguments(argumentCount, arguments));
    } catch (const CLI::ParseError& error) {
        return app.exit(error) == 0 ? Exit_Done : Exit_Usage;
    }
    line.command = trace->parsed()    ? Command::trace
                   : replay->parsed() ? Command::replay
                   : bench->parsed()  ? Command::bench
                                      : Command::info;
    if (bench->parsed() && bench->count("--jobs") == 0)
        line.threadCount = 1;
    return line;
}

} // namespace krohost::cli
