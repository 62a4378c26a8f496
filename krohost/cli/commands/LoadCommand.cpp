#include "krohost/cli/commands/LoadCommand.h"

#include "krohost/cli/input/layout.h"
#include "krohost/cli/terminal/Failure.h"
#include "krohost/cli/terminal/Stopwatch.h"

#include <CLI/CLI.hpp>
#include <fmt/format.h>

#include <algorithm>
#include <thread>

namespace krohost::cli {

namespace {

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

} // namespace

void LoadCommand::addLoadOptions(CLI::App& app) {
    addAppendOption(app, input);
    app.add_option("--record", recordFile_, "Write how FILE was loaded, for krohost replay")->type_name("FILE");
    addForceOption(app, writing);
    app.add_flag("--demand", isDemanding_, "Load every variable and node map");
    addJobsOption(app, threadCount_, std::max(1U, std::thread::hardware_concurrency()));
}

Report LoadCommand::loadAndDemand(Session& session) const {
    Report report;
    const Stopwatch loadTime;
    load(session, input, report);
    if (report.isLoaded && !recordFile_.empty())
        record(session, report);
    report.isDemanded = isDemanding_;
    const double loadSeconds = loadTime.seconds();
    const Stopwatch demandTime;
    if (report.isLoaded && isDemanding_)
        report.demands = session.host.demandAll({threadCount_, session.progress.onDemand()});
    session.progress.clear();
    session.console.note(fmt::format("{} took {:.4f} s", report.loaderName, loadSeconds));
    if (!report.demands.empty())
        session.console.note(fmt::format("{} demands took {:.4f} s, threads: {}", report.demands.size(),
                                         demandTime.seconds(), threadCount_));
    return report;
}

void LoadCommand::record(const Session& session, Report& report) const {
    const std::optional<Instructions>& instructions = session.host.dataset().instructions;
    if (!instructions)
        throw Failure("The loader has recorded no instructions.", Exit_Failed);
    writeLayout(recordFile_, session.plan.permission, *instructions);
    addChangedTimes(changedTimes(input, session.plan, *instructions), recordFile_, report.losses);
}

} // namespace krohost::cli
