#pragma once

#include "krohost/Host.h"
#include "krohost/write/Loss.h"
#include "krohost/write/zoneGrid.h"

#include <filesystem>

namespace krohost::write {

/// Writes the zones as unstructured zones of a CGNS file: a section of elements for each section, one solution for the
/// nodes and one for the cells, the solution time that all zones share. Says which names had to be changed.
/// Holds one array in memory. Throws WriteError, FileError and Interrupted.
void writeCgns(Host& host, const std::filesystem::path& path, const CellOrders& orders, Losses& losses);

} // namespace krohost::write
