#pragma once

#include "krohost/cli/Report.h"

#include <string>

namespace krohost::cli {

/// The output of `krohost info` for people.
std::string tableReport(const Report& report, const Dataset& dataset);

} // namespace krohost::cli
