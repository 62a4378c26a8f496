#include "krohost/cli/bench.h"

#include "krohost/cli/Failure.h"

#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include <sys/resource.h>

#include <algorithm>
#include <chrono>
#include <fstream>

namespace krohost::cli {

namespace {

using Clock = std::chrono::steady_clock;

const Clock::time_point processStart = Clock::now(); // before main begins

double secondsSince(Clock::time_point start) {
    return std::chrono::duration<double>(Clock::now() - start).count();
}

double cpuSeconds() {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    const auto seconds = [](const timeval& time) {
        return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) * 1e-6;
    };
    return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

/// The number behind `key` in a file of the process's own folder of /proc; 0 where there is none.
std::int64_t processFigure(const char* file, const std::string& key) {
    std::ifstream stream{std::string("/proc/self/") + file};
    for (std::string word; stream >> word;)
        if (std::int64_t figure = 0; word == key && stream >> figure)
            return figure;
    return 0;
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
        throw Failure(fmt::format("There is no variable \"{}\".", *variable), Exit_Usage);
    return targets;
}

std::uint64_t storedByteCount(const Dataset& dataset, const std::vector<DemandResult>& demands) {
    std::uint64_t sum = 0;
    for (const DemandResult& demand : demands)
        if (demand.isLoaded)
            sum += dataset.find(demand.target)->byteCount().value_or(0);
    return sum;
}

std::string table(const nlohmann::ordered_json& figures) {
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

} // namespace

Bench bench(Host& host, const CommandLine& line, const Plan& plan) {
    Bench result;
    result.report.loaderName = loaderName(host, line, plan);
    const std::int64_t ownPeakKib = peakKib(), earlierByteCount = processFigure("io", "rchar:");
    const double earlierCpuSeconds = cpuSeconds();
    const Clock::time_point registerStart = Clock::now();
    result.report.isLoaded = load(host, result.report.loaderName, line, plan);
    const double registerSeconds = secondsSince(registerStart);
    result.report.stoppedAt = host.stoppedAt().value_or("");
    if (!result.report.isLoaded)
        return result;

    const std::int64_t registerPeakKib = peakKib();
    const std::vector<Target> targets = wantedTargets(host.dataset(), line.variable);
    const Clock::time_point demandStart = Clock::now();
    result.report.demands = host.demand(targets, {.threadCount = line.threadCount, .isKeeping = true});
    const double demandSeconds = secondsSince(demandStart);
    const double loadCpuSeconds = cpuSeconds() - earlierCpuSeconds;
    result.report.isDemanded = true;

    const nlohmann::ordered_json figures{{"register_s", registerSeconds},
                                         {"demand_s", demandSeconds},
                                         {"wall_s", secondsSince(processStart)},
                                         {"cpu_s", cpuSeconds()},
                                         {"load_cpu_s", loadCpuSeconds}, // of registering and demanding
                                         {"own_peak_kib", ownPeakKib},
                                         {"register_peak_kib", registerPeakKib},
                                         {"peak_kib", peakKib()},
                                         {"threads", line.threadCount},
                                         {"bytes_read", processFigure("io", "rchar:") - earlierByteCount},
                                         {"bytes_stored", storedByteCount(host.dataset(), result.report.demands)}};
    result.text = line.isJson ? figures.dump() + '\n' : table(figures);
    return result;
}

} // namespace krohost::cli
