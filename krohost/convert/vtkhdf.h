#pragma once

#include "krohost/convert/Grid.h"
#include "krohost/convert/Loss.h"

#include <filesystem>
#include <vector>

namespace krohost::convert {

/// Writes grids as the pieces of one unstructured grid of the VTKHDF format, version 1.0, whose datasets are deflated
/// or contiguous. All grids must have the same arrays; field data are those of the first. Says which names had to be
/// changed. Holds a block of one array in memory. Throws WriteError, FileError and Interrupted.
void writeVtkhdf(const std::filesystem::path& path, bool isCompressed, const std::vector<Grid>& grids, Losses& losses);

} // namespace krohost::convert
