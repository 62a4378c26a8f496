#pragma once

#include <cstdint>
#include <string>

namespace fuzz {

/// What the process has used since a call of `begin`, counted so that it is the same on every machine, but for what
/// threads have at the same time.
struct Cost {
    std::uint64_t peakByteCount = 0; ///< of memory on top of what was there at the begin
    std::uint64_t readByteCount = 0; ///< of files

    static void begin();
    static Cost sinceBegin();
};

} // namespace fuzz
