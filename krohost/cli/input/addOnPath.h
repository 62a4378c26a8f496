#pragma once

#include "krohost/cli/input/InputOptions.h"

#include <filesystem>

namespace krohost::cli {

/// The add-on's shared library: the one that --addon names, else the first that exists of those in $KROHOST_ADDON_PATH,
/// else the one beside krohost, where it is built or where it is installed. A folder stands for the add-on in it.
/// Throws AddOnError, which names every place looked at.
std::filesystem::path addOnPath(const HostSettings& settings);

} // namespace krohost::cli
