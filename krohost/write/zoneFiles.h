#pragma once

#include <filesystem>
#include <vector>

namespace krohost::write {

/// The files that become the zones of a load of these files, in their order: collections give their members, and a file
/// without points and cells gives no zone.
std::vector<std::filesystem::path> zoneFiles(const std::vector<std::filesystem::path>& inputs);

} // namespace krohost::write
