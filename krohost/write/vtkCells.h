/// Sections of the host as cells of the VTK file formats.
#pragma once

#include "krohost/Dataset.h"
#include "krohost/Host.h"

#include <cstdint>
#include <vector>

namespace krohost::write {

/// How the cells of one section are written.
struct SectionCells {
    std::uint8_t type = 0; ///< of the file format
    std::uint64_t cellCount = 0;
    std::uint32_t hostNodeCount = 0; ///< per cell, in the host
    std::vector<std::uint8_t> nodes; ///< for the cell's k-th node in the file, its place in the host's list
};

/// One entry per section of a zone; an ordered zone has one of vertices. A file with these types has the same sections
/// when it is loaded again: sections of one shape and order get different types where there are several, and degenerate
/// cells that stand for vertices become vertices. Throws WriteError for a shape and order without counterpart.
std::vector<SectionCells> sectionCells(Host& host, const Zone& zone);

} // namespace krohost::write
