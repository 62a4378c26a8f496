#pragma once

#include <cstddef>
#include <filesystem>
#include <vector>

namespace krohost::convert {

struct ZoneFiles {
    std::vector<std::filesystem::path> files;       ///< in the order of the zones
    std::vector<std::filesystem::path> collections; ///< that name these files; where none does, the file itself
    bool areKnown = false; ///< whether each is the file of the zone with its index; else they are all that is known of
};

/// The files that become the zones of a load of these files: collections give their members, and a file without points
/// and cells gives no zone. One that cannot be read to its end is never left out, and of a collection it is the
/// collection itself that is given. Throws Interrupted.
ZoneFiles zoneFiles(const std::vector<std::filesystem::path>& inputs, std::size_t zoneCount);

} // namespace krohost::convert
