#pragma once

#include "krohost/cli/CommandLine.h"

#include <filesystem>

namespace krohost::cli {

/// The add-on's shared library: the one that the user names, else $KROHOST_ADDON_PATH, else one that stands where the
/// add-on is built or installed beside krohost. Throws AddOnError, which says where it looked, when there is none.
std::filesystem::path addOnPath(const CommandLine& line);

} // namespace krohost::cli
