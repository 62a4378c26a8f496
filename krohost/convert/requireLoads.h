#pragma once

#include "krohost/host/runtime/Host.h"

#include <filesystem>

namespace krohost::convert {

/// Loads a file that is about to get its name, with everything in it. Throws WriteError where the add-on refuses any of
/// it, and Interrupted.
void requireLoads(Host& host, const std::filesystem::path& path);

} // namespace krohost::convert
