#include "krohost/cli/input/InputOptions.h"

#include "krohost/cli/input/series.h"

#include <CLI/CLI.hpp>

#include <algorithm>

namespace krohost::cli {

void addFilesOption(CLI::App& command, InputOptions& options) {
    command
        .add_option("FILE", options.files,
                    "Files to load: data files, patterns in quotes ('step*.vtu'), time series (.pvd, .series)")
        ->required();
}

void addNewLoadOptions(CLI::App& command, InputOptions& options) {
    addFilesOption(command, options);
    command.add_option("--loader", options.loader, "Name of the loader (default: by extension)");
    command.add_option("--time-source", options.timeSource, "Where solution times come from, instead of a time series")
        ->transform(CLI::IsMember({"AUTO", "FROMFIELDDATA", "FROMFILENAME", "NONE"}, CLI::ignore_case));
    command.add_option("--times", options.times, "Solution times of the files, in their order")
        ->delimiter(',')
        ->allow_extra_args(false)
        ->check([](const std::string& text) { return parseTime(text) ? "" : text + " is not a time"; })
        ->type_name("T1,T2,...");
    command.add_option("--strand", options.strand,
                       "Strand of the files that --append adds (default: one above the highest), else of FILE");
}

void addAppendOption(CLI::App& command, InputOptions& options) {
    command.add_option("--append", options.appendedFiles, "Files to add to the dataset, as one strand")
        ->type_name("FILE");
}

void addForceOption(CLI::App& command, WriteOptions& options) {
    command.add_flag("--force", options.isForced, "Replace files that exist, though never one that is read");
}

void addStrictOption(CLI::App& command, WriteOptions& options) {
    command.add_flag("--strict", options.isStrict,
                     "Write nothing when something would be dropped, changed or narrowed");
}

void addJobsOption(CLI::App& command, unsigned& threadCount, unsigned defaultCount) {
    command.add_option("-j,--jobs", threadCount, "Threads that load on demand")
        ->check(CLI::Range(1, 1024).description(""))
        ->type_name("N")
        ->default_str(std::to_string(defaultCount));
    command.preparse_callback([&threadCount, defaultCount](std::size_t) { threadCount = defaultCount; });
}

void addHostOptions(CLI::App& command, HostSettings& settings) {
    command.add_option("--node-bits", settings.nodeBitCount, "Width of stored node numbers (default: as needed)")
        ->check(CLI::IsMember({32, 64}));
    command
        .add_option("--max-memory", settings.memoryByteBudget,
                    "Memory for loaded data, as in 500M or 2G (default: any)")
        ->transform(CLI::AsSizeValue{true}.description(""))
        ->check(CLI::Range(std::uint64_t{1}, std::uint64_t{1} << 60).description("")) // a negative number is beyond
        ->type_name("SIZE");
    addAddOnOption(command, settings);
}

void addAddOnOption(CLI::App& command, HostSettings& settings) {
    command
        .add_option("--addon", settings.addOn,
                    "The add-on's shared library (default: $KROHOST_ADDON_PATH, else the one that came along)")
        ->type_name("FILE");
}

} // namespace krohost::cli
