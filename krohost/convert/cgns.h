#pragma once

#include "krohost/convert/Loss.h"
#include "krohost/convert/zoneGrid.h"
#include "krohost/host/runtime/Host.h"

#include <filesystem>

namespace krohost::convert {

/// Writes the zones as unstructured zones of a CGNS file: a section of elements for each section, one solution for the
/// nodes and one for the cells, the solution time that all zones share. Says which names had to be changed.
/// Holds one array in memory. Throws WriteError, FileError and Interrupted.
void writeCgns(Host& host, const std::filesystem::path& path, const CellOrders& orders, Losses& losses);

} // namespace krohost::convert
