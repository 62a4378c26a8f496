#pragma once

#include "krohost/Host.h"
#include "krohost/cli/CommandLine.h"
#include "krohost/cli/Console.h"
#include "krohost/cli/ProgressBar.h"
#include "krohost/cli/Report.h"
#include "krohost/cli/loading.h"

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
