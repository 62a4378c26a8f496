#pragma once

#include "loader/mesh/VtkCell.h"
#include "loader/mesh/Zone.h"

#include "interface/kro.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace veltra::vtkfile {

/// All cells of a zone that have one type and one number of nodes.
struct Section {
    VtkCell::Type type;
    std::uint32_t nodeCount; ///< of a cell
    std::uint64_t cellCount;
    CellShape_e shape;
    std::uint32_t gridOrder;
};

/// Reads the types and offsets of all cells in the zone's file and groups the cells into sections, in order of first
/// appearance. A zone without cells has one section of vertices, with no cell in it.
///
/// Throws IOException when a cell is of a kind that the loader or the host does not support, when the cells of a piece
/// differ in dimension, when there are more than 16 sections, or when the arrays cannot be read, and
/// InterruptedException. [any thread]
std::vector<Section> groupSections(const FilePtr& file, const Zone& zone);

/// The index of the section that holds such cells, or the number of sections when none does.
std::size_t findSection(const std::vector<Section>& sections, VtkCell::Type type, std::int64_t nodeCount);

/// The host's type for a zone of these sections.
ZoneType_e zoneType(const std::vector<Section>& sections);

} // namespace veltra::vtkfile
