#pragma once

#include "loader/cells/cellTypes.h"
#include "loader/xml/FileHeader.h"

#include <cstdint>
#include <limits>
#include <span>

/// What the loader knows of the cell types of the file format. Everything here is constant. [any thread]
namespace veltra::vtkfile::VtkCell {

using vtkcells::Type;

/// The dimension before the first cell of a piece.
inline constexpr std::uint32_t noDimension = std::numeric_limits<std::uint32_t>::max();

/// Checks that the loader accepts the type and that its dimension is that of the cells before it, which
/// `runningDimension` carries from cell to cell; a vertex goes with any. Throws IOException.
void classify(Type type, std::uint32_t& runningDimension);

/// Throws IOException unless cells of this accepted type can have so many nodes.
void checkNodeCount(Type type, std::int64_t nodeCount);

/// The polynomial order, 1 to 4, of a cell with a checked number of nodes.
std::uint32_t gridOrder(Type type, std::uint32_t nodeCount);

/// The host's shape of an accepted type, and the type of a zone with such cells alone.
CellShape_e hostShape(Type type);
ZoneType_e zoneType(Type type);

/// For the cell's k-th node in the host, its place in the file's list of the cell's nodes; empty when both agree. The
/// order of Lagrange hexahedra depends on the version of the file.
std::span<const std::uint64_t> nodePermutation(FileVersion version, Type type, std::uint32_t nodeCount);

} // namespace veltra::vtkfile::VtkCell
