#pragma once

#include <cstdint>
#include <string>

namespace krohost::cli {

/// The number after `key` in a file of the process's own folder of /proc; 0 where there is none.
std::int64_t processFigure(const char* file, const std::string& key);

/// Bytes that the process has read from files of all kinds.
inline std::int64_t readByteCount() {
    return processFigure("io", "rchar:");
}

} // namespace krohost::cli
