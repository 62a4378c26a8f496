#pragma once

#include "krohost/cli/input/series.h"

#include <cstdint>
#include <vector>

namespace krohost::cli {

/// A file of a series, with its place among those of its time.
struct SeriesMember {
    SeriesFile file;
    std::int64_t part = 0;
};

/// The files that a .pvd collection names, as it names them and in its order. Memory is that of the list. Throws
/// Failure.
std::vector<SeriesMember> pvdMembers(const std::string& path);

} // namespace krohost::cli
