#pragma once

#include "krohost/Dataset.h"
#include "krohost/write/zoneGrid.h"

#include <filesystem>
#include <vector>

namespace krohost::write {

/// For each zone, in which order its cells stand in the file that it came from, which is the order of its values at
/// cells; node lists come section by section instead. Empty for a zone without such values or of one section. Throws
/// WriteError where the order cannot be found out, because values would be at other cells than theirs, and Interrupted.
CellOrders cellOrders(const Dataset& dataset, const std::vector<std::filesystem::path>& inputs);

} // namespace krohost::write
