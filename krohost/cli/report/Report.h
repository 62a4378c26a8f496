#pragma once

#include "krohost/convert/Loss.h"
#include "krohost/host/model/Dataset.h"
#include "krohost/host/runtime/Demand.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace krohost::cli {

/// The outcome of a run, to be shown together with the dataset.
struct Report {
    std::string loaderName; ///< empty when it did not come to a load
    bool isLoaded = false;
    std::string stoppedAt; ///< what the load was doing when it failed, where that is known
    bool isDemanded = false;
    std::vector<DemandResult> demands; ///< in the order of Dataset::targets
    convert::Losses losses;            ///< of what was demanded

    /// The summary of part `partIndex` of a target; null when it was not demanded or not loaded.
    const StorageSummary* find(Target target, std::size_t partIndex = 0) const;
};

/// Eight hexadecimal digits.
std::string hexadecimal(std::uint32_t checksum);

} // namespace krohost::cli
