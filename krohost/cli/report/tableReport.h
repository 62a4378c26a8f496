#pragma once

#include "krohost/cli/report/Report.h"
#include "krohost/cli/terminal/Console.h"

#include <string>

namespace krohost::cli {

/// The output of `krohost info` for people: every zone, or a summary of a dataset with many unless all are wanted.
std::string tableReport(const Report& report, const Dataset& dataset, Style style, bool isShowingAll);

} // namespace krohost::cli
