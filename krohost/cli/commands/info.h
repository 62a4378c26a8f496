#pragma once

#include "krohost/cli/CommandLine.h"
#include "krohost/cli/input/loading.h"
#include "krohost/cli/report/Report.h"
#include "krohost/cli/terminal/Console.h"
#include "krohost/cli/terminal/ProgressBar.h"
#include "krohost/host/runtime/Host.h"

namespace CLI {
class App;
}

namespace krohost::cli {

void addInfoOptions(CLI::App& command, CommandLine& line);
void addReplayOptions(CLI::App& command, CommandLine& line);

/// Loads, records how, and demands everything if that is wanted. Throws Failure.
Report loadAndDemand(Host& host, const CommandLine& line, const Plan& plan, const Console& console,
                     ProgressBar& progress);

} // namespace krohost::cli
