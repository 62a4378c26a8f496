#pragma once

#include "krohost/host/runtime/Host.h"

#include <filesystem>
#include <functional>
#include <optional>
#include <string>

namespace fuzz {

/// Has the add-on load a file in a host of its own and demands everything, twice. Requires what holds for any file: a
/// load or demand that fails shows one dialog and nothing else shows any, no rule of the platform interface is broken,
/// and both times the same comes of it. `look` sees the host once everything is loaded. Returns the outcome.
std::string loadInHost(const std::filesystem::path& path, int nodeBitCount = 0,
                       const std::function<void(krohost::Host&)>& look = {});

/// The zones of a file as the add-on loads it, with checksums of everything; nothing where the load or a demand fails.
/// Auxiliary data are left out.
std::optional<std::string> loadedContent(const std::filesystem::path& path);

} // namespace fuzz
