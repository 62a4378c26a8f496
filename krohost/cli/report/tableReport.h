#pragma once

#include "krohost/cli/Console.h"
#include "krohost/cli/Report.h"

#include <string>

namespace krohost::cli {

/// The output of `krohost info` for people: every zone, or a summary of a dataset with many unless all are wanted.
std::string tableReport(const Report& report, const Dataset& dataset, Style style, bool isShowingAll);

} // namespace krohost::cli
