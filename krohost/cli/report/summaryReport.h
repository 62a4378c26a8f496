#pragma once

#include "krohost/cli/report/Report.h"
#include "krohost/cli/terminal/Console.h"

#include <cstddef>
#include <string>

namespace krohost::cli {

/// The first zones of a dataset, a row each.
std::string zoneTable(const Dataset& dataset, std::size_t zoneCount, Style style);

/// What the zones of a dataset have in common: kinds of zones, steps in time and variables, each with sums and
/// extremes, and the first zones.
std::string summaryReport(const Report& report, const Dataset& dataset, Style style);

} // namespace krohost::cli
