#pragma once

#include "krohost/cli/CommandLine.h"
#include "krohost/cli/input/loading.h"
#include "krohost/cli/report/Report.h"
#include "krohost/cli/terminal/ProgressBar.h"
#include "krohost/host/runtime/Host.h"

#include <nlohmann/json.hpp>

#include <string>

namespace CLI {
class App;
}

namespace krohost::cli {

struct Bench {
    Report report;
    nlohmann::ordered_json figures = nlohmann::ordered_json::object(); ///< what it took; empty when the load failed
};

void addBenchOptions(CLI::App& command, CommandLine& line);

/// Loads, then demands everything, or one variable of all zones, and keeps it, timing both. Throws Failure for a
/// variable that no zone supplies.
Bench bench(Host& host, const CommandLine& line, const Plan& plan, ProgressBar& progress);

/// The figures for people.
std::string benchTable(const nlohmann::ordered_json& figures);

} // namespace krohost::cli
