/// From what the user names to places in a dataset.
#pragma once

#include "krohost/cli/commands/DumpOptions.h"
#include "krohost/host/model/Dataset.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace krohost::cli {

/// Rows of a variable, one value each, or of a section's node list, one element each.
struct Part {
    Target target;
    std::size_t partIndex; ///< of the target's storage
    std::int64_t rowCount; ///< that there are
    std::int64_t rowLength;
    std::int64_t begin, end; ///< of the rows that are wanted
};

struct Selection {
    const Zone& zone;
    bool isNodeMap;
    std::vector<Part> parts; ///< variables or sections
};

/// Throws Failure for what is not there or not clear.
Selection select(const Dataset& dataset, const DumpOptions& options);

} // namespace krohost::cli
