#pragma once

#include "krohost/cli/input/loading.h"
#include "krohost/cli/terminal/Console.h"
#include "krohost/convert/Loss.h"
#include "krohost/host/model/Dataset.h"

#include <nlohmann/json_fwd.hpp>

namespace krohost::cli {

/// The losses as JSON; docs/schemas describes them.
nlohmann::ordered_json lossList(const convert::Losses& losses);

/// A warning for each loss.
void printLosses(const Console& console, const convert::Losses& losses);

/// The values of what a plan loads that the host holds otherwise, as far as these arrays are concerned. None after an
/// interrupt.
convert::Losses lossesOfLoad(const Plan& plan, const convert::UsedArrays& used);

/// All arrays of a dataset.
convert::UsedArrays allArrays(const Dataset& dataset);

} // namespace krohost::cli
