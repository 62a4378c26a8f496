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
/// positions. Memory is that of the tags and of a few arrays being read. [any thread]
std::vector<Finding> checkFile(const std::filesystem::path& path, const Depth& depth, const Poll& poll);

/// Whether an error with its place is among them, as there is for each file that a loader refuses.
bool isExplained(const std::vector<Finding>& findings);

} // namespace krohost::check
