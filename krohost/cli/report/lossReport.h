#pragma once

#include "krohost/Dataset.h"
#include "krohost/cli/Console.h"
#include "krohost/cli/loading.h"
#include "krohost/write/Loss.h"

#include <nlohmann/json_fwd.hpp>

namespace krohost::cli {

/// The losses as JSON; docs/schemas describes them.
nlohmann::ordered_json lossList(const write::Losses& losses);

/// A warning for each loss.
void printLosses(const Console& console, const write::Losses& losses);

/// The values of what a plan loads that the host holds otherwise, as far as these arrays are concerned. None after an
/// interrupt.
write::Losses lossesOfLoad(const Plan& plan, const write::UsedArrays& used);

/// All arrays of a dataset.
write::UsedArrays allArrays(const Dataset& dataset);

} // namespace krohost::cli
