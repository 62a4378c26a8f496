#include "krohost/cli/run.h"

#include "krohost/Host.h"
#include "krohost/cli/Failure.h"
#include "krohost/cli/ProgressBar.h"
#include "krohost/cli/Report.h"
#include "krohost/cli/bench.h"
#include "krohost/cli/jsonReport.h"
#include "krohost/cli/layout.h"
#include "krohost/cli/loading.h"
#include "krohost/cli/tableReport.h"

#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace krohost::cli {

namespace {

std::filesystem::path addOnPath(const CommandLine& line) {
    if (line.addOn)
        return *line.addOn;
    if (const char* fromEnvironment = std::getenv("KROHOST_ADDON_PATH"))
        return fromEnvironment;
    return std::filesystem::read_symlink("/proc/self/exe").parent_path() / "../lib/vtk-data-loader.so";
}

std::vector<std::string> dialogTexts(const Host& host) {
    std::vector<std::string> texts;
    for (const Dialog& dialog : host.dialogs())
        texts.push_back(dialog.text);
    return texts;
}

/// A full disk or a closed pipe must not look like success.
int print(const std::string& text, int exitCode) {
    const bool isWritten = std::fwrite(text.data(), 1, text.size(), stdout) == text.size() && std::fflush(stdout) == 0;
    if (!isWritten)
        fmt::print(stderr, "Standard output cannot be written: {}\n", std::strerror(errno));
    return isWritten || exitCode != Exit_Done ? exitCode : Exit_Failed;
}

/// Ends a run that did not come to a load.
int fail(const CommandLine& line, const std::string& message, int exitCode) {
    fmt::print(stderr, "{}\n", message);
    const bool hasDocument = line.isJson && line.command != Command::bench;
    return hasDocument ? print(jsonText(jsonReport({}, {}), {message}, {}), exitCode) : exitCode;
}

HostOptions hostOptions(const CommandLine& line, ProgressBar& progress) {
    HostOptions options;
    if (line.command == Command::trace)
        options.journal = line.isTracingLists ? JournalDetail::all : JournalDetail::calls;
    options.nodeBitCount = line.nodeBitCount;
    options.onProgress = [&](double fraction, const std::string& text) { progress.show(fraction, text); };
    return options;
}

void record(const Host& host, const std::string& path) {
    if (!host.dataset().instructions)
        throw Failure("The loader has recorded no instructions.", Exit_Failed);
    writeLayout(path, *host.dataset().instructions);
}

Report loadAndDemand(Host& host, const CommandLine& line, const Plan& plan, ProgressBar& progress) {
    Report report;
    report.loaderName = loaderName(host, line, plan);
    report.isLoaded = load(host, report.loaderName, line, plan);
    report.stoppedAt = host.stoppedAt().value_or("");
    if (report.isLoaded && !line.recordFile.empty())
        record(host, line.recordFile);
    report.isDemanded = line.isDemanding;
    if (report.isLoaded && line.isDemanding)
        report.demands = host.demandAll({line.threadCount, [&](std::size_t doneCount, std::size_t count) {
                                             progress.show(static_cast<double>(doneCount) / static_cast<double>(count),
                                                           "Loading on demand");
                                         }});
    return report;
}

int exitCode(const Host& host, const Report& report) {
    if (Host::isInterrupted())
        return Exit_Interrupted;
    const bool hasDemands = std::all_of(report.demands.begin(), report.demands.end(),
                                        [](const DemandResult& result) { return result.isLoaded; });
    return report.isLoaded && hasDemands && host.violations().empty() ? Exit_Done : Exit_Failed;
}

void printProblems(const Host& host, const std::string& stoppedAt) {
    for (const Dialog& dialog : host.dialogs())
        fmt::print(stderr, "{}\n", dialog.text);
    if (!stoppedAt.empty())
        fmt::print(stderr, "krohost: the load stopped at \"{}\"\n", stoppedAt);
    for (const std::string& violation : host.violations())
        fmt::print(stderr, "contract violation: {}\n", violation);
    if (Host::isInterrupted())
        fmt::print(stderr, "Interrupted.\n");
}

/// Ends the host, since its add-on's last violations belong to the run, and prints everything. The dataset goes with
/// the host and is put into words before.
int finish(Host& host, const CommandLine& line, const Report& report) {
    nlohmann::ordered_json document;
    std::string text;
    if (line.isJson)
        document = jsonReport(report, host.dataset());
    else if (line.command != Command::trace && report.isLoaded)
        text = tableReport(report, host.dataset());
    host.shutDown();
    printProblems(host, report.stoppedAt);
    if (line.isJson)
        text = jsonText(std::move(document), dialogTexts(host), host.violations());
    for (const std::string& journalLine : host.journal().lines())
        text += journalLine + '\n';
    return print(text, exitCode(host, report));
}

int finish(Host& host, const Bench& bench) {
    host.shutDown();
    printProblems(host, bench.report.stoppedAt);
    return print(bench.text, exitCode(host, bench.report));
}

} // namespace

int run(const CommandLine& line) {
    ProgressBar progress;
    Host host{hostOptions(line, progress)};
    try {
        const Plan plan = makePlan(line);
        host.loadAddOn(addOnPath(line));
        if (line.command == Command::bench)
            return finish(host, bench(host, line, plan));
        const Report report = loadAndDemand(host, line, plan, progress);
        progress.clear();
        return finish(host, line, report);
    } catch (const Failure& failure) {
        return fail(line, failure.what(), failure.exitCode());
    } catch (const AddOnError& error) {
        printProblems(host, "");
        return fail(line, error.what(), Exit_AddOnNotLoaded);
    }
}

} // namespace krohost::cli
