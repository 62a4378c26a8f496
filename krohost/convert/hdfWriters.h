/// Writers that need HDF5. They are a module of their own, loaded when one is asked for: that library brings thirty
/// others along, which would double the time that every start of the tool takes.
#pragma once

#include "krohost/convert/Grid.h"
#include "krohost/convert/Loss.h"
#include "krohost/convert/zoneGrid.h"
#include "krohost/host/runtime/Host.h"

#include <filesystem>
#include <vector>

namespace krohost::convert {

struct HdfWriters {
    /// writeVtkhdf and writeCgns.
    void (*vtkhdf)(const std::filesystem::path& path, bool isCompressed, const std::vector<Grid>& grids,
                   Losses& losses);
    void (*cgns)(Host& host, const std::filesystem::path& path, const CellOrders& orders, Losses& losses);
};

/// Loads the module if it is not loaded yet. Throws WriteError when it cannot be.
const HdfWriters& hdfWriters();

} // namespace krohost::convert
