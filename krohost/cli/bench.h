#pragma once

#include "krohost/Host.h"
#include "krohost/cli/CommandLine.h"
#include "krohost/cli/Report.h"
#include "krohost/cli/loading.h"

#include <string>

namespace krohost::cli {

struct Bench {
    Report report;
    std::string text; ///< what it took, as a table or one line of JSON; empty when the load failed
};

/// Loads, then demands everything, or one variable of all zones, and keeps it, timing both. Throws Failure for a
/// variable that no zone supplies.
Bench bench(Host& host, const CommandLine& line, const Plan& plan);

} // namespace krohost::cli
