#pragma once

#include "krohost/cli/CommandLine.h"
#include "krohost/cli/report/Report.h"
#include "krohost/cli/terminal/ProgressBar.h"
#include "krohost/host/runtime/Host.h"

#include <nlohmann/json.hpp>

#include <string>

namespace CLI {
class App;
}

namespace krohost::cli {

void addDiffOptions(CLI::App& command, CommandLine& line);

struct Diff {
    Report report;      ///< of both loads and of the demands
    bool isSame = true; ///< as far as the report goes
    std::string text;   ///< a line for each difference
    nlohmann::ordered_json document;
};

/// Loads two datasets, A and B, side by side, and compares what they hold, two arrays in memory at a time. Throws
/// Failure for what cannot be opened.
Diff diff(Host& host, const CommandLine& line, ProgressBar& progress);

} // namespace krohost::cli
