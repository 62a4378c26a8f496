#include "krohost/cli/commands/info.h"

#include "krohost/cli/Failure.h"
#include "krohost/cli/input/layout.h"
#include "krohost/cli/options.h"
#include "krohost/cli/report/lossReport.h"
#include "krohost/cli/terminal/Stopwatch.h"

#include <CLI/CLI.hpp>
#include <fmt/format.h>

namespace krohost::cli {

namespace {

void addReportOptions(CLI::App& command, CommandLine& line) {
    addLoadOptions(command, line);
    command.add_flag("--all", line.isShowingAll, "Show every zone, also of a dataset with many");
    addHostOptions(command, line);
    command.add_flag("--json", line.isJson, "Print one JSON document");
    addOutputOptions(command, line);
}

/// Loaders may record times with fewer digits than they were given.
void addChangedTimes(const std::vector<double>& times, const std::string& file, convert::Losses& losses) {
    if (!times.empty())
        losses.add(
            {.what = "changed",
             .message = fmt::format("The layout \"{}\" does not keep all solution times: {} of them, the first is {}.",
                                    file, times.size(), times.front()),
             .file = file,
             .count = times.size()});
}

void record(const Host& host, const CommandLine& line, const Plan& plan, Report& report) {
    const std::optional<Instructions>& instructions = host.dataset().instructions;
    if (!instructions)
        throw Failure("The loader has recorded no instructions.", Exit_Failed);
    writeLayout(line.recordFile, plan.permission, *instructions);
    addChangedTimes(changedTimes(line, plan, *instructions), line.recordFile, report.losses);
}

} // namespace

void addInfoOptions(CLI::App& command, CommandLine& line) {
    addNewLoadOptions(command, line);
    addReportOptions(command, line);
}

void addReplayOptions(CLI::App& command, CommandLine& line) {
    command.add_option("FILE", line.files, "The recorded load")->required()->expected(1);
    addReportOptions(command, line);
    command
        .add_option("--strand", line.strand, "Strand of the files that --append adds (default: one above the highest)")
        ->needs("--append");
}

Report loadAndDemand(Host& host, const CommandLine& line, const Plan& plan, const Console& console,
                     ProgressBar& progress) {
    Report report;
    report.loaderName = loaderName(host, line, plan);
    const Stopwatch loadTime;
    report.isLoaded = load(host, report.loaderName, line, plan);
    report.stoppedAt = host.stoppedAt().value_or("");
    if (report.isLoaded && !line.recordFile.empty())
        record(host, line, plan, report);
    report.isDemanded = line.isDemanding;
    const double loadSeconds = loadTime.seconds();
    const Stopwatch demandTime;
    if (report.isLoaded && line.isDemanding)
        report.demands = host.demandAll({line.threadCount, progress.onDemand()});
    const bool isReporting = line.command == Command::info || line.command == Command::replay;
    if (isReporting && !report.demands.empty())
        report.losses.add(lossesOfLoad(plan, allArrays(host.dataset())));
    progress.clear();
    console.note(fmt::format("{} took {:.4f} s", report.loaderName, loadSeconds));
    if (!report.demands.empty())
        console.note(fmt::format("{} demands took {:.4f} s, threads: {}", report.demands.size(), demandTime.seconds(),
                                 line.threadCount));
    return report;
}

} // namespace krohost::cli
