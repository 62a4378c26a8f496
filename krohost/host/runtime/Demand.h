/// Loads on demand, many at once, and looks at what came.
#pragma once

#include "krohost/host/model/Deferred.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>
#include <vector>

namespace krohost {

class HostState;

/// What one storage holds. `min` and `max` skip NaN and are NaN when nothing is left.
struct StorageSummary {
    std::int64_t count;
    double min;
    double max;
    std::uint32_t crc32; // of the raw little-endian bytes
};

/// One part for a variable, one per section for a node map; none unless loaded.
struct DemandResult {
    Target target;
    bool isLoaded = false;
    std::vector<StorageSummary> parts;
};

struct DemandOptions {
    unsigned threadCount = 1;
    /// Told how many demands are served. [any thread, one at a time]
    std::function<void(std::size_t doneCount, std::size_t count)> onProgress = {};
    /// What is loaded stays loaded and is not looked at.
    bool isKeeping = false;
};

/// Loads each target and, unless it is to be kept, looks at it and unloads it again; what was loaded before stays so.
/// Results, dialogs and events of the journal come in the order of the targets, whatever the threads. Stops at an
/// interrupt: what was not begun is not loaded. Every target must exist and be there once. [main thread]
std::vector<DemandResult> demand(HostState& host, std::span<const Target> targets, const DemandOptions& options);

/// The summaries of a loaded object's storage.
std::vector<StorageSummary> summarize(const Deferred& deferred);

/// The values of a loaded variable; every storage type fits a double.
std::vector<double> values(const KroFieldData& fieldData);
/// The node numbers of a loaded node map, section by section.
std::vector<std::vector<std::int64_t>> nodeNumbers(const KroNodeMap& nodeMap);

} // namespace krohost
