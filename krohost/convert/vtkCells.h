/// Sections of the host as cells of the VTK file formats.
#pragma once

#include "krohost/convert/cellOrder.h"
#include "krohost/host/model/Dataset.h"
#include "krohost/host/runtime/Host.h"

#include <cstdint>
#include <vector>

namespace krohost::convert {

/// How the cells of one section are written.
struct SectionCells {
    std::uint8_t type = 0; ///< of the file format
    std::uint64_t cellCount = 0;
    std::uint32_t hostNodeCount = 0; ///< per cell, in the host
    std::vector<std::uint8_t> nodes; ///< for the cell's k-th node in the file, its place in the host's list
};

constexpr std::uint8_t vertexType = 1;

/// Whether cells of this type of the file format can be those of the section. Vertices can be those of any of order 1.
bool isTypeOf(const Section& section, std::uint8_t type);

/// One entry per section of a zone; an ordered zone has one of vertices, of which each point has one or as many as
/// there are in the file. Types are those of the file. Where that is not known, a file with these types still has the
/// same sections when it is loaded again: sections of one shape and order get different types where there are several,
/// and degenerate cells that stand for vertices become vertices. Throws WriteError for a shape and order without
/// counterpart.
std::vector<SectionCells> sectionCells(Host& host, const Zone& zone, const CellOrder& order);

} // namespace krohost::convert
