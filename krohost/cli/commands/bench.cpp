#include "krohost/cli/commands/table.h"
#include "krohost/cli/terminal/Failure.h"
#include "krohost/cli/terminal/Stopwatch.h"
#include "krohost/cli/terminal/processFigure.h"
#include "krohost/text/suggest.h"

#include <CLI/CLI.hpp>
#include <fmt/format.h>

#include <sys/resource.h>

#include <algorithm>

namespace krohost::cli {

namespace {

const Stopwatch processTime; // before main begins

double cpuSeconds() {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    const auto seconds = [](const timeval& time) {
        return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) * 1e-6;
    };
    return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

// Not ru_maxrss, which a process takes over from the one that started it.
std::int64_t peakKib() {
    return processFigure("status", "VmHWM:");
}

std::vector<Target> wantedTargets(const Dataset& dataset, const std::optional<std::string>& variable) {
    std::vector<Target> targets = dataset.targets();
    if (!variable)
        return targets;
    const auto isOther = [&](Target target) {
        return target.variable == 0 || dataset.variables[static_cast<std::size_t>(target.variable) - 1] != *variable;
    };
    std::erase_if(targets, isOther);
    if (targets.empty())
        throw Failure(noSuch("variable", *variable, dataset.variables), Exit_Usage);
    return targets;
}

std::uint64_t storedByteCount(const Dataset& dataset, const std::vector<DemandResult>& demands) {
    std::uint64_t sum = 0;
    for (const DemandResult& demand : demands)
        if (demand.isLoaded)
            sum += dataset.find(demand.target)->byteCount().value_or(0);
    return sum;
}

/// The figures for people.
std::string benchTable(const nlohmann::ordered_json& figures) {
    const double registering = figures["register_s"], demanding = figures["demand_s"];
    const double read = figures["bytes_read"].get<double>() * 1e-6;
    const double stored = figures["bytes_stored"].get<double>() * 1e-6;
    return fmt::format("registering  {:10.4f} s   at most {:.1f} MiB of memory, {:.1f} before\n"
                       "demands      {:10.4f} s   {:.1f} MB stored, {:.0f} MB/s, threads: {}\n"
                       "both         {:10.4f} s   {:.1f} MB read, {:.0f} MB/s\n"
                       "process      {:10.4f} s   {:.4f} s of processor, at most {:.1f} MiB of memory\n",
                       registering, figures["register_peak_kib"].get<double>() / 1024,
                       figures["own_peak_kib"].get<double>() / 1024, demanding, stored, stored / demanding,
                       figures["threads"].get<unsigned>(), registering + demanding, read,
                       read / (registering + demanding), figures["wall_s"].get<double>(),
                       figures["cpu_s"].get<double>(), figures["peak_kib"].get<double>() / 1024);
}

/// Loads, then demands everything, or one variable of all zones, and keeps it, timing both.
class Bench : public Command {
public:
    explicit Bench(CLI::App& app) {
        addNewLoadOptions(app, input);
        addJobsOption(app, threadCount_, 1);
        app.add_option("--variable", variable_, "Load this variable only, in every zone that has it");
        addHostOptions(app, host);
        addJsonOption(app, output, "Print one JSON object on one line");
        addOutputOptions(app, output);
    }

    bool isOnOneLine() const override { return true; }

    Outcome run(Session& session) override {
        Outcome outcome;
        Report& report = outcome.report;
        const std::int64_t ownPeakKib = peakKib(), earlierByteCount = readByteCount();
        const double earlierCpuSeconds = cpuSeconds();
        const Stopwatch registerTime;
        const bool isLoaded = load(session, input, report);
        const double registerSeconds = registerTime.seconds();
        if (!isLoaded)
            return outcome;

        const std::int64_t registerPeakKib = peakKib();
        const Dataset& dataset = session.host.dataset();
        const std::vector<Target> targets = wantedTargets(dataset, variable_);
        const Stopwatch demandTime;
        report.demands = session.host.demand(
            targets, {.threadCount = threadCount_, .onProgress = session.progress.onDemand(), .isKeeping = true});
        const double demandSeconds = demandTime.seconds();
        const double loadCpuSeconds = cpuSeconds() - earlierCpuSeconds;
        report.isDemanded = true;

        const std::uint64_t storedBytes = storedByteCount(dataset, report.demands);
        outcome.document = {{"register_s", registerSeconds},
                            {"demand_s", demandSeconds},
                            {"wall_s", processTime.seconds()},
                            {"cpu_s", cpuSeconds()},
                            {"load_cpu_s", loadCpuSeconds}, // of registering and demanding
                            {"own_peak_kib", ownPeakKib},
                            {"register_peak_kib", registerPeakKib},
                            {"peak_kib", peakKib()},
                            {"threads", threadCount_},
                            {"bytes", storedBytes},
                            {"bytes_read", readByteCount() - earlierByteCount},
                            {"bytes_stored", storedBytes}};
        outcome.text = benchTable(outcome.document);
        return outcome;
    }

private:
    unsigned threadCount_ = 1;
    std::optional<std::string> variable_; // the only one that is demanded
};

} // namespace

const CommandEntry benchCommand{"bench", "Load every variable and node map, keep them, and show what it took",
                                "  krohost bench -j 4 run.pvd                with four threads\n"
                                "  krohost bench --json --variable pressure wing.vtu\n",
                                makeCommand<Bench>};

} // namespace krohost::cli
