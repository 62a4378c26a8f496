#include "krohost/cli/options.h"

#include "krohost/cli/input/series.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <map>
#include <thread>

namespace krohost::cli {

namespace {

void addWhenOption(CLI::App& command, const char* name, When& when, const char* help) {
    const std::map<std::string, When> words{
        {"auto", When::automatic}, {"always", When::always}, {"never", When::never}};
    command.add_option(name, when, help)
        ->transform(CLI::CheckedTransformer(words).description(""))
        ->type_name("auto|always|never");
}

} // namespace

void addFilesOption(CLI::App& command, CommandLine& line) {
    command
        .add_option("FILE", line.files,
                    "Files to load: data files, patterns in quotes ('step*.vtu'), time series (.pvd, .series)")
        ->required();
}

void addNewLoadOptions(CLI::App& command, CommandLine& line) {
    addFilesOption(command, line);
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

void addLoadOptions(CLI::App& command, CommandLine& line) {
    command.add_option("--append", line.appendedFiles, "Files to add to the dataset, as one strand")->type_name("FILE");
    command.add_option("--record", line.recordFile, "Write how FILE was loaded, for krohost replay")->type_name("FILE");
    addForceOption(command, line);
    command.add_flag("--demand", line.isDemanding, "Load every variable and node map");
    addJobsOption(command, line, std::max(1U, std::thread::hardware_concurrency()));
}

void addForceOption(CLI::App& command, CommandLine& line) {
    command.add_flag("--force", line.isForced, "Replace files that exist, though never one that is read");
}

void addStrictOption(CLI::App& command, CommandLine& line) {
    command.add_flag("--strict", line.isStrict, "Write nothing when something would be dropped, changed or narrowed");
}

void addJobsOption(CLI::App& command, CommandLine& line, unsigned defaultCount) {
    command.add_option("-j,--jobs", line.threadCount, "Threads that load on demand")
        ->check(CLI::Range(1, 1024).description(""))
        ->type_name("N")
        ->default_str(std::to_string(defaultCount));
    command.preparse_callback([&line, defaultCount](std::size_t) { line.threadCount = defaultCount; });
}

void addHostOptions(CLI::App& command, CommandLine& line) {
    command.add_option("--node-bits", line.nodeBitCount, "Width of stored node numbers (default: as needed)")
        ->check(CLI::IsMember({32, 64}));
    command
        .add_option("--max-memory", line.memoryByteBudget, "Memory for loaded data, as in 500M or 2G (default: any)")
        ->transform(CLI::AsSizeValue{true}.description(""))
        ->check(CLI::Range(std::uint64_t{1}, std::uint64_t{1} << 60).description("")) // a negative number is beyond
        ->type_name("SIZE");
    addAddOnOption(command, line);
}

void addAddOnOption(CLI::App& command, CommandLine& line) {
    command
        .add_option("--addon", line.addOn,
                    "The add-on's shared library (default: $KROHOST_ADDON_PATH, else the one that came along)")
        ->type_name("FILE");
}

void addOutputOptions(CLI::App& command, CommandLine& line) {
    command.add_flag("-q,--quiet", line.isQuiet, "Show no progress and no warnings");
    command.add_flag("-v,--verbose", line.isVerbose, "Say more: the add-on, the loader and the times taken");
    addWhenOption(command, "--progress", line.progress, "Show progress (default: on a terminal)");
    addWhenOption(command, "--color", line.color, "Use colours (default: on a terminal, unless NO_COLOR is set)");
}

} // namespace krohost::cli
