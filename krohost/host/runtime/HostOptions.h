#pragma once

#include "krohost/host/line/Journal.h"

#include <cstdint>
#include <functional>
#include <limits>
#include <string>

namespace krohost {

/// Bytes of memory that this machine has.
std::uint64_t physicalMemoryByteCount();

struct HostOptions {
    JournalDetail journal = JournalDetail::off;
    /// Width of stored node numbers, 32 or 64; 0: 32 for zones whose node numbers fit.
    int nodeBitCount = 0;
    /// The largest storage that one load on demand may take.
    std::uint64_t storageByteLimit = physicalMemoryByteCount();
    /// What all loaded data may take together: when a load needs the room, data are unloaded that were used least
    /// recently. They are loaded again when they are asked for.
    std::uint64_t memoryByteBudget = std::numeric_limits<std::uint64_t>::max();
    /// Told of the add-on's progress: a fraction from 0 to 1 and what is being done. [main thread]
    std::function<void(double fraction, const std::string& text)> onProgress = {};
};

} // namespace krohost
