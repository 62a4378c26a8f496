/// What is wrong with a file, and where in it.
#pragma once

#include "krohost/check/Finding.h"
#include "krohost/check/arrayChecks.h"

#include <filesystem>
#include <vector>

namespace krohost::check {

struct Depth {
    bool isExplaining = false; ///< what a loader refuses
    bool isDeep = false;       ///< what a loader passes over: every value is decoded
};

/// The findings of a file and, if it is a collection, of each of its members once, file by file, in the order of their
/// positions. Memory is at most that of the types of one piece's cells. [any thread]
std::vector<Finding> checkFile(const std::filesystem::path& path, const Depth& depth, const Poll& poll);

} // namespace krohost::check
