#pragma once

#include "interface/kro.h"
#include "loader/xml/FileHeader.h"

#include <array>
#include <cstdint>
#include <limits>
#include <span>
#include <string_view>

/// What the loader knows of the cell types of the file format. Everything here is constant. [any thread]
namespace veltra::vtkfile::VtkCell {

/// The values are the file format's own codes; a "types" array is read straight into them, so any byte can occur.
enum class Type : std::uint8_t {
    Vertex = 1,
    Line = 3,
    Triangle = 5,
    Pixel = 8,
    Quad = 9,
    Tetra = 10,
    Voxel = 11,
    Hexahedron = 12,
    Wedge = 13,
    Pyramid = 14,
    QuadraticEdge = 21,
    QuadraticTriangle = 22,
    QuadraticTetra = 24,
    BiQuadraticQuad = 28,
    BiQuadraticQuadraticWedge = 32,
    LagrangeCurve = 68,
    LagrangeTriangle = 69,
    LagrangeQuadrilateral = 70,
    LagrangeTetrahedron = 71,
    LagrangeHexahedron = 72,
    LagrangeWedge = 73
};

/// The dimension before the first cell of a piece.
inline constexpr std::uint32_t noDimension = std::numeric_limits<std::uint32_t>::max();

/// The display name of any code, "Unknown" for one that the format does not define.
std::string_view typeName(Type type);

/// Checks that the loader accepts the type and that its dimension is that of the cells before it, which
/// `runningDimension` carries from cell to cell; a vertex goes with any. Throws IOException.
void classify(Type type, std::uint32_t& runningDimension);

/// Throws IOException unless cells of this accepted type can have so many nodes.
void checkNodeCount(Type type, std::int64_t nodeCount);

/// The polynomial order, 1 to 4, of a cell with a checked number of nodes.
std::uint32_t gridOrder(Type type, std::uint32_t nodeCount);

/// The host's shape of an accepted type.
CellShape_e hostShape(Type type);

/// For the cell's k-th node in the host, its place in the file's list of the cell's nodes; empty when both agree. The
/// order of Lagrange hexahedra depends on the version of the file.
std::span<const std::uint64_t> nodePermutation(FileVersion version, Type type, std::uint32_t nodeCount);

} // namespace veltra::vtkfile::VtkCell
