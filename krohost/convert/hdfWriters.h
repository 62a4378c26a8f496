/// Writers that need HDF5. They are a module of their own, loaded when one is asked for: that library brings thirty
/// others along, which would double the time that every start of the tool takes.
#pragma once

#include "krohost/Host.h"
#include "krohost/write/Grid.h"
#include "krohost/write/Loss.h"
#include "krohost/write/zoneGrid.h"

#include <filesystem>
#include <vector>

namespace krohost::write {

struct HdfWriters {
    /// writeVtkhdf and writeCgns.
    void (*vtkhdf)(const std::filesystem::path& path, bool isCompressed, const std::vector<Grid>& grids,
                   Losses& losses);
    void (*cgns)(Host& host, const std::filesystem::path& path, const CellOrders& orders, Losses& losses);
};

/// Loads the module if it is not loaded yet. Throws WriteError when it cannot be.
const HdfWriters& hdfWriters();

} // namespace krohost::write
